#include "qvhost/base/log_dir.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "files/sync.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const fs::path& path, const std::string& reason) {
    throw std::runtime_error(path.string() + ": " + reason);
}

constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// No part of the path may be a link; where the kernel cannot see to that, its last part may not.
Descriptor open_without_links(const fs::path& directory) {
    open_how how{};
    how.flags = kDirectoryFlags;
    how.resolve = RESOLVE_NO_SYMLINKS;
    const auto opened = ::syscall(SYS_openat2, AT_FDCWD, directory.c_str(), &how, sizeof how);
    if (opened >= 0 || (errno != ENOSYS && errno != EPERM))
        return Descriptor(static_cast<int>(opened));
    return Descriptor(::open(directory.c_str(), kDirectoryFlags | O_NOFOLLOW));
}

}  // namespace

void make_private_directory(const fs::path& path) {
    if (::mkdir(path.c_str(), 0700) == 0) {
        // mkdir() subtracts the umask, which may take the owner's own rights. A list that the directory above
        // has for what is made in it would give rights to others.
        for (const char* list : {"system.posix_acl_access", "system.posix_acl_default"})
            ::removexattr(path.c_str(), list);
        ::chmod(path.c_str(), 0700);
    } else if (errno != EEXIST) {
        fail(path, std::string("cannot make the directory: ") + std::strerror(errno));
    }
}

DirLock::DirLock(const fs::path& directory) : directory_(open_without_links(directory)) {
    struct stat info {};
    if (!directory_ || ::fstat(directory_.get(), &info) != 0) fail(directory, std::strerror(errno));
    if (info.st_uid != ::geteuid()) fail(directory, "it belongs to another user");
    if (::flock(directory_.get(), LOCK_EX | LOCK_NB) != 0)
        fail(directory, "another collection is running in this directory");
}

bool DirLock::is_held(const fs::path& directory) {
    const Descriptor opened(::open(directory.c_str(), kDirectoryFlags));
    return opened && ::flock(opened.get(), LOCK_SH | LOCK_NB) != 0;
}

fs::path LogDir::of_lane(const fs::path& directory, const char* name, const char* ending,
                         unsigned lane) {
    return directory / (name + (lane == 1 ? "" : "-" + std::to_string(lane)) + ending);
}

bool LogDir::is_own(const std::string& name) {
    return name == "report" || name == "runs" || name == "qvhost.log" || name == "console.txt" ||
           name.starts_with("report-");
}

void sync_log_dir(const LogDir& dir) {
    sync_tree(dir.path(), [](const fs::path& name) {
        return name == "runs" || name.string().starts_with("report-");
    });
}

JudgedPlace judge_log_dir(const fs::path& path) {
    auto place = judge_private(fs::absolute(path));
    const LogDir dir(place.path);
    for (const auto& own : {dir.report(), dir.runs()}) {
        if (place.refusal.empty()) place.refusal = judge_private(own).refusal;
    }
    return place;
}

fs::path checked_log_dir(const fs::path& path) {
    const auto place = judge_log_dir(path);
    if (!place.refusal.empty())
        fail(fs::absolute(path), "it cannot be the log directory: " + place.refusal);
    // The interface's buffers have 256 bytes, for the directory, its "/" and the end.
    if (place.path.string().size() > 254) fail(place.path, "the path is longer than 254 bytes");
    return place.path;
}

fs::path make_log_dir(const fs::path& path) {
    const auto whole = checked_log_dir(path);
    std::error_code error;
    fs::create_directories(whole.parent_path(), error);
    if (error) fail(whole.parent_path(), error.message());
    make_private_directory(whole);
    return checked_log_dir(whole);  // now that it is there
}

}  // namespace qvhost
