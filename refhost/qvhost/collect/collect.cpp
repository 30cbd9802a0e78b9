#include "qvhost/collect/collect.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <stdexcept>

#include "processes/processes.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/machine_lock.h"
#include "qvhost/base/site_rules.h"
#include "qvhost/base/trust.h"
#include "qvhost/collect/dry_run.h"
#include "qvhost/collect/lanes.h"
#include "qvhost/collect/offer.h"
#include "qvhost/collect/program_path.h"
#include "qvhost/collect/progress.h"
#include "qvhost/collect/selection.h"
#include "qvhost/collect/supervise.h"
#include "qvhost/collect/warn.h"
#include "qvhost/finish/finish_report.h"
#include "qvhost/finish/journal_importer.h"
#include "qvhost/finish/lane_files.h"
#include "qvhost/finish/runs.h"
#include "qvhost/finish/summary.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// Exit statuses.
constexpr int kComplete = 0;
constexpr int kNothingCollected = 1;
constexpr int kIncomplete = 3;

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
std::string text_of_seconds_since(std::chrono::steady_clock::time_point begin) {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", passed.count());
    return text;
}

void warn_if_others_can_read(const fs::path& directory) {
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0 || (info.st_mode & 077) == 0) return;
    warn(directory.string() +
         " is open to others; what is collected holds serial numbers, "
         "addresses and logs");
}

void warn_of_foreign_files(const LogDir& dir, std::vector<std::string> names) {
    if (names.empty()) return;
    constexpr std::size_t kMostNamed = 5;
    const auto others = names.size() - std::min(names.size(), kMostNamed);
    names.resize(names.size() - others);
    warn(dir.path().string() +
         " holds what no collection has left there, and it stays: " + boost::join(names, ", ") +
         (others == 0 ? "" : " and " + std::to_string(others) + " more"));
}

// Refuses programs that another user could have put there: they would run as this user, maybe root.
void expect_trusted(const std::string& refusal) {
    if (!refusal.empty()) throw std::runtime_error("nothing is run from there: " + refusal);
}

// The program itself and what it is linked with.
void expect_program_trusted(const fs::path& program) {
    const auto bin = program.parent_path();
    const auto lib = bin.parent_path() / "lib";
    for (const auto& place :
         {bin, program, lib, lib / "librepository.so", lib / "liblogger.so.2.7"})
        expect_trusted(why_not_trusted_itself(place));
}

// What is not known is left out.
void note_machine(Store& store, const MachineIdentity& machine) {
    const auto note = [&](const char* key, const std::optional<std::string>& value) {
        if (value) store.set_meta(key, *value);
    };
    note("host", machine.host);
    note("machine_id", machine.machine_id);
    note("os", machine.os);
    note("kernel", machine.kernel);
    if (machine.uptime_seconds)
        store.set_meta("uptime_seconds", std::to_string(*machine.uptime_seconds));
    store.set_meta("run_as", effective_user());
}

// A line each; without the second texts if there is nothing to stand between them.
std::string lines_of(const std::vector<std::pair<std::string, std::string>>& pairs,
                     const std::string& between) {
    std::string lines;
    for (const auto& [first, second] : pairs)
        lines += (lines.empty() ? "" : "\n") + first + (between.empty() ? "" : between + second);
    return lines;
}

ToolPlaces places_of_tools(const CollectOptions& options, const Stage& stage) {
    ToolPlaces places{.vendor_tools = stage.vendor_tools(),
                      .search_path = stage.search_path,
                      .started = stage.started_files,
                      .refused = stage.refused_files};
    if (places.search_path.empty()) places.search_path = options.search_path;
    if (places.search_path.empty()) places.search_path = usual_search_path();
    return places;
}

void remove_if_empty(const fs::path& file) {
    std::error_code ignored;
    if (fs::file_size(file, ignored) == 0) fs::remove(file, ignored);
}

// The plug-in that was asked for, its tables and the lanes of its modules. Names in the options become those that it has.
struct Selected {
    DeclaredTables declared;
    std::vector<Lane> lanes{Lane()};
};

Selected selected_by(CollectOptions& options) {
    options.plugin = fs::absolute(options.plugin.empty() ? installed_plugin() : options.plugin);
    expect_trusted(why_not_trusted_itself(options.plugin.parent_path()));
    expect_trusted(why_not_trusted_itself(options.plugin));
    auto declared = tables_declared_by(options.plugin);
    if (!declared.problem.empty()) warn("the tables have no titles: " + declared.problem);
    expect_known_tools(options, declared);
    const auto offer = offer_of(options.plugin, limits_for(options).module_seconds);
    settle_names(options, offer, declared.tables);
    auto lanes = lanes_of(offer, options, declared.tables);
    return {std::move(declared), std::move(lanes)};
}

// What is known before the first command.
void note_beginning(Store& store, const CollectOptions& options, const std::string& rules,
                    const Stage& stage, const LogDir& dir,
                    const std::vector<std::string>& foreign) {
    store.set_meta("started", utc_now());
    store.set_meta("status", "running");
    store.set_meta("log_dir", dir.path().string());
    note_foreign_files(store, foreign);
    store.set_meta("qvhost", QV_VERSION);
    store.set_meta("limits", text_of(limits_for(options)));
    store.set_meta("profile", options.profile);
    if (!rules.empty()) store.set_meta("rules", rules);
    store.set_meta("also", boost::join(options.also, ","));
    store.set_meta("stand_ins", lines_of(stage.stand_ins, ""));
    store.set_meta("vendor_tools", lines_of(stage.vendor_files, " "));
    note_machine(store, stage.machine);
    if (!stage.recorded.empty()) store.set_meta("recorded", stage.recorded);
    if (!stage.lacks.empty()) store.set_meta("recorded_lacks", lines_of(stage.lacks, "\t") + "\n");
}

}  // namespace

int collect(CollectOptions options, const Stage& stage) {
    expect_path_fits_plugin(stage.program);
    const auto rules = options.rules.empty() ? std::string() : read_rules_file(options.rules);
    if (options.dry_run) {
        print_plan(options, stage);
        return 0;
    }
    expect_program_trusted(program_file());
    expect_program_trusted(stage.program);
    expect_trusted(why_not_trusted(stage.vendor_tools()));
    const bool has_modules = options.profile != kHealthProfile;
    const auto selected = has_modules ? selected_by(options) : Selected();
    std::optional<MachineLock> machine;
    if (options.machine_lock && !options.replayed)  // a replay asks no machine
        machine.emplace(machine_lock_file(), "collecting into " + options.log_dir.string());
    options.log_dir = make_log_dir(options.log_dir);
    const LogDir dir(options.log_dir);
    warn_if_others_can_read(dir.path());
    const DirLock lock(dir.path());
    const auto room = make_room_for_run(dir, !has_modules);
    if (!room.found.empty()) warn("found " + room.found);
    warn_of_foreign_files(dir, room.foreign);

    const auto begun = std::chrono::steady_clock::now();
    {
        Store store(dir.store(), Store::Mode::create);
        note_beginning(store, options, rules, stage, dir, room.foreign);
        if (has_modules) write_declared_tables(store, selected.declared.tables);
        store.commit();

        JournalImporter importer(store);
        Progress progress(dir, options.quiet, selected.lanes);
        Ending ending;
        try {
            ending = supervise(options, selected.lanes, stage, importer, progress);
        } catch (...) {
            // The store or the journal failed. The tools must not go on without us.
            kill_descendants();
            throw;
        }

        importer.explain_unreached();
        store.set_meta("finished", utc_now());
        store.set_meta("seconds", text_of_seconds_since(begun));
        remove_if_empty(dir.console());
        finish_report(store, dir, places_of_tools(options, stage), ending);
    }
    sync_log_dir(dir);  // the journal is there until the disk has what was made of it
    remove_lane_files(dir);
    RunsKept kept;
    if (options.keep) kept.runs = *options.keep;
    if (options.keep_bytes) kept.bytes = *options.keep_bytes;
    remove_earlier_runs(dir, kept);

    const Store store(dir.store(), Store::Mode::read);
    if (stage.summary) print_summary(std::cout, store, dir, terminal_style(STDOUT_FILENO));
    if (store.meta("status") == "complete") return kComplete;
    warn("the collection is " + store.status_text());
    return has_modules && store.modules().empty() ? kNothingCollected : kIncomplete;
}

}  // namespace qvhost
