#include "qvhost/base/trust.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace qvhost {

namespace fs = std::filesystem;

namespace {

bool others_write(const struct stat& info) {
    // Users mostly have a group of their own. Root trusts no group but its own.
    const bool group_counts = ::geteuid() == 0 && info.st_gid != 0;
    return (info.st_mode & S_IWOTH) != 0 || (group_counts && (info.st_mode & S_IWGRP) != 0);
}

bool is_ours_or_roots(const struct stat& info) {
    return info.st_uid == ::geteuid() || info.st_uid == 0;
}

std::string why_way_is_open(const fs::path& directory) {
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0) return std::strerror(errno);
    if (!is_ours_or_roots(info))
        return directory.string() + " belongs to another user, who could replace it";
    if (others_write(info) && (info.st_mode & S_ISVTX) == 0)
        return directory.string() + " can be written by others, who could replace it";
    return "";
}

// A tool would write through a link to wherever it leads, and wait at a pipe that nobody reads.
std::string why_not_plain(const fs::path& directory) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        const auto status = entry.symlink_status(error);
        const auto name = entry.path().filename().string();
        if (fs::is_symlink(status)) return name + " in it is a symbolic link";
        if (!fs::is_regular_file(status) && !fs::is_directory(status))
            return name + " in it is neither a file nor a directory";
    }
    return error ? error.message() : "";
}

std::string why_file_is_not_trusted(const fs::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return "";  // there is nothing to run
    if (!is_ours_or_roots(info)) return path.string() + " belongs to another user";
    if (others_write(info)) return path.string() + " can be written by others";
    return "";
}

}  // namespace

std::string why_not_private(const fs::path& directory) {
    struct stat info {};
    if (::lstat(directory.c_str(), &info) != 0) return std::strerror(errno);
    if (S_ISLNK(info.st_mode)) return "it is a symbolic link; name the directory itself";
    if (!S_ISDIR(info.st_mode)) return "not a directory";
    if (info.st_uid != ::geteuid()) return "it belongs to another user";
    if (others_write(info)) return "others can write to it";
    for (auto way = directory.parent_path();; way = way.parent_path()) {
        if (auto reason = why_way_is_open(way); !reason.empty()) return reason;
        if (way == way.parent_path()) break;
    }
    return why_not_plain(directory);
}

std::string why_not_trusted(const fs::path& path) {
    if (auto reason = why_file_is_not_trusted(path); !reason.empty()) return reason;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(path, ignored)) {
        if (auto reason = why_file_is_not_trusted(entry.path()); !reason.empty()) return reason;
    }
    return "";
}

}  // namespace qvhost
