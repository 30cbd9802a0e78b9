#include "qvhost/base/leftovers.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <system_error>

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::time_t kLeastAge = 600;  // seconds; a new directory is not held at once
constexpr std::size_t kRandomLetters = 6;

bool has_name_of(const std::string& name, const std::vector<std::string>& names) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& one) {
        return name.size() == one.size() + 1 + kRandomLetters && name.starts_with(one + "-");
    });
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

// Without O_CLOEXEC: the collecting child holds it as well. Tools get no descriptors.
Descriptor hold_directory(const fs::path& directory) {
    Descriptor held(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
    if (held) ::flock(held.get(), LOCK_EX | LOCK_NB);
    return held;
}

void remove_leftovers(const fs::path& parent, const std::vector<std::string>& names,
                      const std::vector<std::string>& contents) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
         entry.increment(error)) {
        if (has_name_of(entry->path().filename().string(), names)) found.push_back(entry->path());
    }
    for (const auto& directory : found) {
        const Descriptor opened(
            ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!opened || !is_ours_and_old(opened.get()) ||
            ::flock(opened.get(), LOCK_EX | LOCK_NB) != 0)
            continue;
        if (holds_only(directory, contents) && !runs_programs(directory))
            fs::remove_all(directory, error);
    }
}

}  // namespace qvhost
