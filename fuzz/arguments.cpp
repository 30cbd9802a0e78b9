// The command line of qvhost, an argument a line. main() is compiled under another name, and what it
// would do is noted here. What the collecting child is told arrives there as it was meant.
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include "check.h"
#include "outcome.h"
#include "qvhost/child.h"
#include "qvhost/options.h"

int qvhost_main(int argc, char** argv);

namespace {

std::optional<qvhost::CollectOptions> asked;
std::string search_path;  // of the child

int note(const qvhost::CollectOptions& options) {
    fuzz::expect(options.log_level <= 4 && options.tool_timeout >= 1 && !options.log_dir.empty(),
                 "options are in their ranges");
    asked = options;
    return 0;
}

int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qvhost");
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    return qvhost_main(static_cast<int>(arguments.size()), argv.data());
}

bool same(const qvhost::CollectOptions& a, const qvhost::CollectOptions& b) {
    return a.log_dir == b.log_dir && a.log_level == b.log_level && a.modules == b.modules &&
           a.tables == b.tables && a.tool_timeout == b.tool_timeout && a.plugin == b.plugin &&
           a.also == b.also;
}

}  // namespace

namespace qvhost {

int asked_child(const CollectOptions& options, const Stage& stage, int) {
    search_path = stage.search_path;
    return note(options);
}
int asked_collect(const CollectOptions& options) { return note(options); }
int asked_replay(const std::filesystem::path&, CollectOptions options) { return note(options); }
void asked_tables(const std::filesystem::path&) {}
void asked_show(const std::filesystem::path&, const std::vector<std::string>&) {}

}  // namespace qvhost

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Pieces input(fuzz::text_of(data, size));
    std::vector<std::string> arguments;
    while (!input.at_end()) arguments.emplace_back(input.until('\n'));

    const fuzz::Printed printed;
    asked.reset();
    const int status = run(arguments);
    fuzz::expect(status >= 0 && status <= 2, "the exit code is 0, 1 or 2");
    fuzz::expect(status == 0 || !printed.text().empty(), "a failure says what it is");
    if (!asked) return 0;

    auto wanted = *asked;
    wanted.log_dir = "/log" / wanted.log_dir;  // both are absolute by then
    wanted.plugin = "/plugin" / wanted.plugin;
    asked.reset();
    search_path.clear();
    const auto child = qvhost::child_arguments(wanted, {"", "-p", false}, 7);
    const int childs_status = run(child);
    fuzz::expect_same(printed.text(), "", "the child understands");
    fuzz::expect(childs_status == 0 && asked && same(*asked, wanted) && search_path == "-p",
                 "the child gets the options that were given");
    return 0;
}
