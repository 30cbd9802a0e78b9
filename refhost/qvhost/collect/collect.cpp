#include "qvhost/collect/collect.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <stdexcept>

#include "qvhost/collect/ambient.h"
#include "qvhost/collect/dry_run.h"
#include "qvhost/collect/fill.h"
#include "qvhost/collect/log_dir.h"
#include "qvhost/collect/processes.h"
#include "qvhost/collect/program_path.h"
#include "qvhost/collect/progress.h"
#include "qvhost/collect/supervise.h"
#include "qvhost/collect/trust.h"
#include "qvhost/complete/complete_report.h"
#include "qvhost/complete/summary.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// "2026-11-21T01:20:40Z"
std::string utc_now() {
    const auto now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

// "12.345"
std::string seconds_since(std::chrono::steady_clock::time_point begin) {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", passed.count());
    return text;
}

void warn(const std::string& text) { std::cerr << "qvhost: " << one_line(text) << '\n'; }

void warn_if_others_can_read(const fs::path& directory) {
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0 || (info.st_mode & 077) == 0) return;
    warn(directory.string() +
         " is open to others; what is collected holds serial numbers, "
         "addresses and logs");
}

// What lies there is run as the user, who may be root.
void expect_trusted(const fs::path& programs) {
    if (const auto reason = why_not_trusted(programs); !reason.empty())
        throw std::runtime_error("nothing is run from there: " + reason);
}

void remove_if_empty(const fs::path& file) {
    std::error_code ignored;
    if (fs::file_size(file, ignored) == 0) fs::remove(file, ignored);
}

}  // namespace

int collect(CollectOptions options, const Stage& stage) {
    expect_path_fits_plugin(stage.program);
    if (options.dry_run) {
        tell_plan(options, stage);
        return 0;
    }
    expect_trusted(stage.program.parent_path() / "qv_tools");
    options.log_dir = make_log_dir(options.log_dir);
    options.plugin = fs::absolute(options.plugin.empty() ? installed_plugin() : options.plugin);
    expect_trusted(options.plugin);
    const LogDir dir(options.log_dir);
    warn_if_others_can_read(dir.path());
    const DirLock lock(dir.path());
    if (const auto found = make_room_for_report(dir); !found.empty()) warn("found " + found);

    // A second's grace: file systems keep times more coarsely than clocks.
    const auto started = fs::file_time_type::clock::now() - std::chrono::seconds(1);
    const auto begun = std::chrono::steady_clock::now();
    std::string problem;
    {
        Store store(dir.store(), Store::Mode::create);
        store.set_meta("started", utc_now());
        store.set_meta("status", "running");
        store.set_meta("qvhost", QV_VERSION);
        store.set_meta("limits", text_of(limits_for(options.limits)));
        store.commit();

        JournalReader journal(dir.journal());
        Filler filler(journal, store);
        Progress progress(dir.path(), options.quiet);
        try {
            problem = supervise(options, stage, filler, progress);
        } catch (...) {  // a store or journal that fails
            kill_descendants();
            throw;
        }

        filler.explain_unreached();
        store.set_meta("finished", utc_now());
        store.set_meta("seconds", seconds_since(begun));
        store.set_meta("status", problem.empty() ? "complete" : "incomplete: " + problem);
        remove_if_empty(dir.console());
        complete_report(store, dir, stage.program.parent_path() / "qv_tools", started);
    }
    fs::remove(dir.journal());
    fs::remove(dir.commands());

    const Store store(dir.store(), Store::Mode::read);
    print_summary(std::cout, store, dir, terminal_style(STDOUT_FILENO));
    if (!problem.empty()) warn("the collection is incomplete: " + problem);
    return problem.empty() ? 0 : 1;
}

int collect_here(const CollectOptions& options) {
    return collect(options, {program_file(), "", false});
}

}  // namespace qvhost
