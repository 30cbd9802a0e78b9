#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "files/descriptor.h"
#include "files/temporary_directory.h"
#include "fleet/schema.h"
#include "processes/processes.h"
#include "qvfleet/commands.h"
#include "show/visible.h"

namespace qvhost::fleet {

namespace fs = std::filesystem;

namespace {

constexpr const char* kToolTimeout = "5";  // seconds; what is recorded answers at once, or never

std::vector<fs::path> machines_in(const fs::path& samples) {
    std::vector<fs::path> machines;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(samples, error)) {
        if (fs::exists(entry.path() / "machine.json", error)) machines.push_back(entry.path());
    }
    std::sort(machines.begin(), machines.end());
    if (machines.empty())
        throw std::runtime_error(samples.string() + ": there are no recorded servers");
    return machines;
}

// The qvhost beside this program.
std::string collector() { return fs::read_symlink("/proc/self/exe").parent_path() / "qvhost"; }

// Standard output goes nowhere; errors are the user's to see.
void run(const std::vector<std::string>& arguments) {
    const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    wait_for_process(start_process(
        {.program = collector(), .arguments = arguments, .descriptors = {{nowhere.get(), 1}}}));
}

void show(const std::string& title, const std::string& meaning) {
    std::cout << '\n' << title << ": " << meaning << '\n' << std::flush;
}

}  // namespace

int demo_command(const Options& given, bool has_database) {
    const TemporaryDirectory place("qvfleet-demo");
    Options options = given;
    if (!has_database) options.place = place.path() / "fleet.sqlite";
    for (const auto& machine : machines_in(options.samples)) {
        const auto name = machine.filename().string();
        const auto log_dir = place.path() / "reports" / name;
        fs::create_directories(log_dir.parent_path());
        std::cerr << "collecting from " << one_line(name) << '\n';
        run({"replay", machine, "--log-dir", log_dir, "--quiet", "--tool-timeout", kToolTimeout});
        const auto bundle = place.path() / (name + ".tar.zst");
        run({"bundle", log_dir, "--output", bundle});
        options.import.bundles.push_back(bundle);
    }
    show("import", "each recorded server is a host with one run");
    int status = import_command(options);
    // Some are recorded without an identity on purpose, and are skipped.
    if (status == kSomeSkipped) status = kDone;
    show("status", "the worst first");
    status_command(options);
    for (const auto& view : views()) {
        if (!view.is_answer) continue;
        show(view.name, view.meaning);
        options.relation = view.name;
        export_command(options);
    }
    return status;
}

}  // namespace qvhost::fleet
