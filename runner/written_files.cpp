#include "runner/written_files.h"

#include <dirent.h>
#include <fcntl.h>

#include <set>

#include "runner/command_log.h"
#include "runner/shell_words.h"

namespace runner {

namespace {

bool same(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::set<std::string>& stale_files() {
    static std::set<std::string> files;
    return files;
}

}  // namespace

bool WrittenFiles::State::operator==(const State& other) const {
    return inode == other.inode && size == other.size && same(written, other.written) &&
           same(changed, other.changed);
}

std::map<std::string, WrittenFiles::State> WrittenFiles::all() {
    std::map<std::string, State> files;
    if (!is_logging()) return files;
    DIR* directory = ::opendir(".");
    if (!directory) return files;
    while (const dirent* entry = ::readdir(directory)) {
        const std::string name = entry->d_name;
        struct stat info {};
        if (name == "." || name == ".." ||
            ::fstatat(::dirfd(directory), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        files[name] = {info.st_ino, info.st_size, info.st_mtim, info.st_ctim};
    }
    ::closedir(directory);
    return files;
}

WrittenFiles::WrittenFiles() : before_(all()) {}

std::vector<std::string> WrittenFiles::changed() const {
    std::vector<std::string> names;
    for (const auto& [name, state] : all()) {
        const auto known = before_.find(name);
        if (known == before_.end() || !(known->second == state)) names.push_back(name);
    }
    return names;
}

void note_started(const std::string& command) {
    if (stale_files().empty()) return;
    for (const auto& file : redirections(command)) stale_files().erase(file);
}

void note_not_started(const std::string& command) {
    for (auto& file : redirections(command)) stale_files().insert(std::move(file));
}

bool is_stale(const std::string& path) { return stale_files().contains(path); }

}  // namespace runner
