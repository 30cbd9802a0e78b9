// The log directory: the unit that people pass around.
#pragma once

#include <filesystem>
#include <string>

#include "files/descriptor.h"
#include "qvhost/base/trust.h"

namespace qvhost {

// How many lanes a collection has at most. A lane is a process that asks some of the modules, beside others.
inline constexpr unsigned kMostLanes = 8;

// The files of a collection in it. A lane beyond the first has its own journal and logs in the report's directory:
// "collection-2.journal".
class LogDir {
public:
    explicit LogDir(std::filesystem::path path) : path_(std::move(path)) {}

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path report() const { return path_ / "report"; }
    std::filesystem::path store() const { return report() / "report.sqlite"; }
    std::filesystem::path page() const { return report() / "index.html"; }
    std::filesystem::path json() const { return report() / "report.json"; }
    // As long as the first lane's journal is there, the report is not finished.
    std::filesystem::path journal(unsigned lane = 1) const {
        return of_lane(report(), "collection", ".journal", lane);
    }
    std::filesystem::path commands(unsigned lane = 1) const {
        return of_lane(report(), "commands", ".log", lane);
    }
    std::filesystem::path log(unsigned lane = 1) const {
        return of_lane(lane == 1 ? path_ : report(), "qvhost", ".log", lane);
    }
    std::filesystem::path console(unsigned lane = 1) const {
        return of_lane(lane == 1 ? path_ : report(), "console", ".txt", lane);
    }
    std::filesystem::path runs() const { return path_ / "runs"; }  // earlier collections

    // Whether a name in a log directory is one of these, or a report that an older program moved aside.
    static bool is_own(const std::string& name);

private:
    static std::filesystem::path of_lane(const std::filesystem::path& directory, const char* name,
                                         const char* ending, unsigned lane);

    std::filesystem::path path_;
};

// Holds the directory for one collection at a time.
class DirLock {
public:
    // Opens it through no link and holds it. Throws std::runtime_error if another process does, or if it is
    // another user's.
    explicit DirLock(const std::filesystem::path& directory);

    // Whether another process holds the directory now.
    static bool is_held(const std::filesystem::path& directory);

private:
    Descriptor directory_;
};

// The log directory without links on its way, and why nothing may be written there: it, or its report, is not
// the user's alone (trust.h). Callers write to the path in the result, not to `path`.
JudgedPlace judge_log_dir(const std::filesystem::path& path);

// The directory as an absolute path without links, "." and ".."; nothing is made. Throws std::runtime_error
// if it cannot be a log directory, or if it is there and not the user's alone.
std::filesystem::path checked_log_dir(const std::filesystem::path& path);

// Waits until the disk has the captures and the report; reports of earlier collections are left out. Throws
// std::system_error naming what it did not take.
void sync_log_dir(const LogDir& dir);

// Makes the directory (mode 0700) where there is none; its parent must be there. Throws
// std::runtime_error.
void make_private_directory(const std::filesystem::path& path);

// Makes the log directory (mode 0700) where there is none, with the directories above it. Returns and
// throws as checked_log_dir() does.
std::filesystem::path make_log_dir(const std::filesystem::path& path);

}  // namespace qvhost
