// The command line of qvhost, an argument a line, as far as it is understood; nothing is done. What the
// collecting child is told arrives there as it was meant. Completion takes the same words.
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include "check.h"
#include "outcome.h"
#include "qvhost/cli/command_line.h"
#include "qvhost/collect/child.h"

namespace {

using qvhost::Asked;

// What was asked for; nothing if the command line was wrong, or asked for help.
std::optional<Asked> parsed(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qvhost");
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    Asked asked;
    const auto app = qvhost::command_line(asked);
    try {
        app->parse(static_cast<int>(arguments.size()), argv.data());
    } catch (const CLI::Success& wanted) {
        app->exit(wanted);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        const fuzz::Printed printed;
        app->exit(error);
        fuzz::expect(!printed.text().empty(), "a failure says what it is");
        return std::nullopt;
    }
    return asked;
}

bool same(const qvhost::CollectOptions& a, const qvhost::CollectOptions& b) {
    return a.log_dir == b.log_dir && a.log_level == b.log_level && a.modules == b.modules &&
           a.tables == b.tables && qvhost::limits_for(a.limits) == qvhost::limits_for(b.limits) &&
           a.plugin == b.plugin && a.also == b.also;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Pieces input(fuzz::text_of(data, size));
    std::vector<std::string> arguments;
    while (!input.at_end()) arguments.emplace_back(input.until('\n'));

    const fuzz::Printed printed;
    Asked nothing;
    fuzz::told(
        [&] { qvhost::write_completions(std::cout, *qvhost::command_line(nothing), arguments); });

    auto asked = parsed(arguments);
    if (!asked || asked->collect.log_dir.empty()) return 0;
    auto& wanted = asked->collect;
    const auto limits = qvhost::limits_for(wanted.limits);
    fuzz::expect(wanted.log_level <= 4, "options are in their ranges");
    fuzz::expect(limits.silence >= 1 && limits.silence <= limits.tool &&
                     limits.tool <= limits.archive && limits.archive <= limits.module &&
                     limits.module <= limits.run,
                 "limits do not contradict each other");
    wanted.log_dir = "/log" / wanted.log_dir;  // both are absolute by then
    wanted.plugin = "/plugin" / wanted.plugin;
    const auto child = parsed(qvhost::child_arguments(wanted, {"", "-p", false}, 7));
    fuzz::expect(child && same(child->collect, wanted) && child->stage.search_path == "-p",
                 "the child gets the options that were given");
    return 0;
}
