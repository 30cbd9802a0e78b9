#include "files/leftovers.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <system_error>
#include <utility>

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::time_t kLeastAge = 600;  // seconds; a new directory is not held at once
constexpr std::size_t kRandomLetters = 6;

bool is_named_after(const std::string& name, const ThrowAway& kind) {
    return name.size() == kind.name.size() + 1 + kRandomLetters &&
           name.starts_with(kind.name + "-");
}

bool is_ours_and_old(int directory) {
    struct stat info {};
    return ::fstat(directory, &info) == 0 && info.st_uid == ::geteuid() &&
           (info.st_mode & 07777) == 0700 && std::time(nullptr) - info.st_mtim.tv_sec >= kLeastAge;
}

bool holds_only(const fs::path& directory, const std::vector<std::string>& contents) {
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const auto name = entry->path().filename().string();
        if (std::find(contents.begin(), contents.end(), name) == contents.end()) return false;
    }
    return !error;
}

// Whether a process runs a program in the directory. Processes of other users do not tell.
bool runs_programs(const fs::path& directory) {
    const auto begin = (fs::canonical(directory) / "").string();
    std::error_code error;
    fs::directory_iterator process("/proc", error);
    for (; !error && process != fs::directory_iterator(); process.increment(error)) {
        std::error_code none;
        const auto program = fs::read_symlink(process->path() / "exe", none);
        if (program.string().starts_with(begin)) return true;
    }
    return static_cast<bool>(error);
}

}  // namespace

const std::vector<ThrowAway>& throw_away_directories() {
    static const std::vector<std::string> programs{"bin", "lib", "notes", "path", "record"};
    static const std::vector<ThrowAway> kinds{
        {"qvhost-run",    programs                                                   },
        {"qvhost-replay", programs                                                   },
        {"qvhost-doctor", programs                                                   },
        {"qvhost-check",  {"log"}                                                    },
        {"qvhost-record", {"log", "notes", "replay"}                                 },
        {"qvhost-store",  {"report.sqlite", "report.sqlite-wal", "report.sqlite-shm"}},
    };
    return kinds;
}

// Without O_CLOEXEC: the collecting child holds it as well. Tools get no descriptors.
Descriptor hold_directory(const fs::path& directory) {
    Descriptor held(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
    if (held) ::flock(held.get(), LOCK_EX | LOCK_NB);
    return held;
}

void remove_leftovers(const fs::path& parent, const std::vector<ThrowAway>& kinds) {
    std::vector<std::pair<fs::path, const ThrowAway*>> found;
    std::error_code error;
    for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        for (const auto& kind : kinds) {
            if (is_named_after(name, kind)) found.emplace_back(entry->path(), &kind);
        }
    }
    for (const auto& [directory, kind] : found) {
        const Descriptor opened(
            ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!opened || !is_ours_and_old(opened.get()) ||
            ::flock(opened.get(), LOCK_EX | LOCK_NB) != 0)
            continue;
        if (holds_only(directory, kind->contents) && !runs_programs(directory))
            fs::remove_all(directory, error);
    }
}

}  // namespace qvhost
