// The runs of a log directory. The latest lies in the directory itself; each earlier one lies as a whole below
// runs/, where it is a log directory of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

// What was found when room was made for a run.
struct Room {
    std::string found;  // for people: the run before, and where it is now; empty: there was none
    std::vector<std::string> foreign;  // what no run has left there, and what stays
};

// Makes an empty report directory. The run before moves to runs/TIME with all that it has left: captures, log
// and report; one of the profile "health" gives way to the next of these (`is_quick`), which may come every
// five minutes. The lock must be held.
Room make_room_for_run(const LogDir& dir, bool is_quick);

// Notes in the store what lay in the directory before the run began.
void note_foreign_files(Store& store, const std::vector<std::string>& names);

// What lies in the directory and is not the run's: of those the ones that it has not written since, and what was
// added after it. The store has its commands.
std::set<std::string> foreign_files(const Store& store, const LogDir& dir);

// Notes in the store, which has the commands, what the run has left in the directory.
void note_files_of_run(Store& store, const LogDir& dir);

// The names of files and directories that the latest run has left: captures, the log, "report".
std::vector<std::string> files_of_latest_run(const LogDir& dir);

// The directories of the earlier runs, the newest first.
std::vector<std::filesystem::path> earlier_runs(const std::filesystem::path& log_dir);

// How many of the earlier runs stay, and how much room they may take together.
struct RunsKept {
    std::size_t runs = std::numeric_limits<std::size_t>::max();
    std::uint64_t bytes = std::numeric_limits<std::uint64_t>::max();
};

// Removes earlier runs, the oldest first, until those that are left may stay. The lock must be held. Throws
// std::system_error.
void remove_earlier_runs(const LogDir& dir, const RunsKept& kept);

}  // namespace qvhost
