#include "runner/written_files.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>

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

WrittenFiles::States WrittenFiles::all(const char* directory) const {
    States files;
    DIR* const entries = looks_ ? ::opendir(directory) : nullptr;
    if (!entries) return files;
    while (const dirent* entry = ::readdir(entries)) {
        const std::string name = entry->d_name;
        struct stat info {};
        if (name == "." || name == ".." ||
            ::fstatat(::dirfd(entries), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        const off_t size = S_ISREG(info.st_mode) ? info.st_size : 0;
        files[name] = {info.st_ino, size, info.st_mtim, info.st_ctim};
    }
    ::closedir(entries);
    return files;
}

bool WrittenFiles::is_changed(const States::value_type& file) const {
    const auto known = before_.find(file.first);
    return known == before_.end() || !(known->second == file.second);
}

WrittenFiles::WrittenFiles(bool looks, const std::string& command) : looks_(looks) {
    before_ = all(".");
    std::error_code unknown;
    const auto here = std::filesystem::current_path(unknown).string();
    if (looks && std::getenv("QV_DIRECTORY_SHARED")) named_ = named_in_directory(command, here);
}

bool WrittenFiles::may_be_its_own(const std::string& name) const {
    if (!named_ || named_->itself) return true;
    return std::find(named_->files.begin(), named_->files.end(), name) != named_->files.end();
}

std::vector<std::string> WrittenFiles::changed() const {
    std::vector<std::string> names;
    for (const auto& file : all(".")) {
        if (is_changed(file)) names.push_back(file.first);
    }
    return names;
}

WrittenFiles::Bytes WrittenFiles::bytes() const {
    Bytes sum;
    for (const auto& file : all(".")) {
        const auto size = static_cast<std::uint64_t>(file.second.size);
        sum.all += size;
        if (size > sum.largest && is_changed(file) && may_be_its_own(file.first))
            sum.largest = size;
    }
    for (const auto& [name, state] : all("report"))
        sum.all += static_cast<std::uint64_t>(state.size);
    return sum;
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
