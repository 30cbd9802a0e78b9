#include "qvhost/replay/record.h"

#include <iostream>

#include "compat/recorder.h"
#include "files/sync.h"
#include "files/temporary_directory.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/misuse.h"
#include "qvhost/collect/collect_here.h"
#include "qvhost/present/open_report.h"
#include "qvhost/present/unfinished.h"
#include "qvhost/replay/machine.h"
#include "qvhost/replay/record_report.h"
#include "qvhost/replay/redact_recording.h"
#include "qvhost/replay/replay.h"
#include "qvhost/replay/same_report.h"
#include "redact/map_file.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr int kSame = 0;
constexpr int kNotTheSame = 3;

// "samples/NAME/" is "samples/NAME": what is made gets its name at the end.
fs::path place_of(const fs::path& output) {
    auto place = fs::absolute(output).lexically_normal();
    return place.has_filename() ? place : place.parent_path();
}

struct Source {
    fs::path report;  // a log directory
    std::vector<compat::ToolNote> notes = {};
};

Recording recording_of(const Source& source, const fs::path& plugin) {
    const auto opened = open_with_captures(source.report, "a server is recorded from");
    return record_report(opened.store, LogDir(source.report), vendor_tools_of(plugin),
                         source.notes);
}

Recording write(const Source& source, const fs::path& directory, const fs::path& plugin) {
    auto recording = recording_of(source, plugin);
    write_recording(recording, directory);
    return recording;
}

// Gives what was made its name, without its secrets if that is wanted.
void finish(const Recording& recording, Unfinished& made, const fs::path& place,
            const fs::path& report, const RecordOptions& options) {
    const auto commands = read_machine(made.path()).commands.size();  // it can be replayed
    const auto keep = [&](Unfinished& one) {
        sync_tree(one.path());
        one.become(place);
        sync_names(place.parent_path());
    };
    if (options.redact.empty()) {
        keep(made);
    } else {
        Unfinished redacted(place);
        auto substitutes =
            options.map.empty() ? redact::Substitutes() : redact::read_map(options.map);
        redact_recording(Store(LogDir(report).store(), Store::Mode::read), made.path(),
                         redacted.path(), redact::classes_of(options.redact), substitutes);
        (void)read_machine(redacted.path());
        if (!options.map.empty()) redact::write_map(options.map, substitutes);
        keep(redacted);
    }
    std::cout << one_line(place.string()) << ": " << commands << " commands\n";
    for (const auto& line : recording.not_known)
        std::cout << "not known: " << one_line(line) << '\n';
}

// A map that cannot be used is told before anything is collected.
void expect_map(const fs::path& map, const fs::path& place, const fs::path& report) {
    if (map.empty()) return;
    redact::expect_map_outside(map, place, "the recorded server");
    if (!report.empty()) redact::expect_map_outside(map, report, "the report");
    (void)redact::read_map(map);
}

// What a replay gives that differs. Tools take no time in it, but for those that did not end.
std::vector<std::string> replayed_differently(const fs::path& machine_dir, const fs::path& original,
                                              CollectOptions options, const fs::path& place) {
    constexpr unsigned kSeconds = 10;  // enough for a stand-in on a busy machine
    auto machine = read_machine(machine_dir);
    for (auto& command : machine.commands) {
        if (command.seconds < kNeverEnds) command.seconds = 0;
    }
    options.log_dir = place / "replay";
    options.quiet = true;
    options.machine_lock = false;
    options.tool_seconds = kSeconds;
    options.tool_limits.clear();
    replay(machine, options, false);
    return differences(original, options.log_dir);
}

void record_report_of(const RecordOptions& options) {
    const auto place = place_of(options.output);
    expect_free(place);
    expect_map(options.map, place, options.from);
    Unfinished made(place);
    const auto recording = write({options.from}, made.path(), {});
    finish(recording, made, place, options.from, options);
}

int record_here(const RecordOptions& options, CollectOptions collecting) {
    const auto place = place_of(options.output);
    expect_free(place);
    expect_map(options.map, place, collecting.log_dir);
    Unfinished made(place);
    const TemporaryDirectory temporary("qvhost-record");
    if (collecting.log_dir.empty()) collecting.log_dir = temporary.path() / "log";
    const auto notes = temporary.path() / "notes";
    make_private_directory(notes);
    collect_here(collecting, false, notes);
    const auto recording =
        write({collecting.log_dir, compat::notes_in(notes)}, made.path(), collecting.plugin);
    const auto different =
        replayed_differently(made.path(), collecting.log_dir, collecting, temporary.path());
    finish(recording, made, place, collecting.log_dir, options);
    for (const auto& one : different)
        std::cerr << "qvhost: it does not replay the same: " << one_line(one) << '\n';
    if (different.empty())
        std::cout << (options.redact.empty() ? "replayed: "
                                             : "replayed before values were replaced: ")
                  << "the same commands, records, inventory and findings\n";
    return different.empty() ? kSame : kNotTheSame;
}

}  // namespace

int record(const RecordOptions& options, const CollectOptions& collecting) {
    if (options.redact.empty() && !options.map.empty()) throw Misuse("--map belongs to --redact");
    if (!options.redact.empty() && redact::classes_of(options.redact).empty())
        throw Misuse("--redact: " + options.redact +
                     " is none of serials, network, users, secrets and all");
    if (options.from.empty()) return record_here(options, collecting);
    record_report_of(options);
    return kSame;
}

}  // namespace qvhost
