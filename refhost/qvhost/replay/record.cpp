#include "qvhost/replay/record.h"

#include <iostream>
#include <stdexcept>
#include <system_error>

#include "files/sync.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/present/open_report.h"
#include "qvhost/present/unfinished.h"
#include "qvhost/replay/machine.h"
#include "qvhost/replay/record_report.h"
#include "show/visible.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

void expect_free(const fs::path& output) {
    std::error_code error;
    if (fs::exists(fs::symlink_status(output, error)) &&
        !(fs::symlink_status(output).type() == fs::file_type::directory && fs::is_empty(output)))
        throw std::runtime_error(output.string() + ": exists already; nothing is written into it");
}

// "samples/NAME/" is "samples/NAME": what is made gets its name at the end.
fs::path place_of(const fs::path& output) {
    auto place = fs::absolute(output).lexically_normal();
    return place.has_filename() ? place : place.parent_path();
}

Recording recording_of(const fs::path& report) {
    if (!fs::is_directory(report))
        throw std::runtime_error(report.string() +
                                 ": a server is recorded from a log directory, with its captures");
    const LogDir dir(report);
    const auto opened = open_report(report);
    if (fs::exists(dir.journal()))
        throw std::runtime_error(report.string() + ": a collection is running here");
    return record_report(opened.store, dir, vendor_tools_of({}));
}

}  // namespace

void record(const RecordOptions& options) {
    const auto place = place_of(options.output);
    expect_free(place);
    auto recording = recording_of(options.from);
    Unfinished made(place);
    write_recording(recording, made.path());
    const auto commands = read_machine(made.path()).commands.size();  // it can be replayed
    sync_tree(made.path());
    made.become(place);
    sync_names(place.parent_path());
    std::cout << one_line(place.string()) << ": " << commands << " commands\n";
    for (const auto& line : recording.not_known)
        std::cout << "not known: " << one_line(line) << '\n';
}

}  // namespace qvhost
