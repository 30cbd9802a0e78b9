#include "qvhost/base/log_dir.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "qvhost/base/trust.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const fs::path& path, const std::string& reason) {
    throw std::runtime_error(path.string() + ": " + reason);
}

Descriptor open_directory(const fs::path& directory) {
    return Descriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace

void make_private_directory(const fs::path& path) {
    if (::mkdir(path.c_str(), 0700) == 0) {
        // mkdir() subtracts the umask, which may take the owner's own rights.
        ::chmod(path.c_str(), 0700);
    } else if (errno != EEXIST) {
        fail(path, std::string("cannot make the directory: ") + std::strerror(errno));
    }
}

DirLock::DirLock(const fs::path& directory) : directory_(open_directory(directory)) {
    if (!directory_) fail(directory, std::strerror(errno));
    if (::flock(directory_.get(), LOCK_EX | LOCK_NB) != 0)
        fail(directory, "another collection is running in this directory");
}

bool DirLock::is_held(const fs::path& directory) {
    const auto opened = open_directory(directory);
    return opened && ::flock(opened.get(), LOCK_SH | LOCK_NB) != 0;
}

std::string why_not_ours(const LogDir& dir) {
    for (const auto& place : {dir.path(), dir.report()}) {
        if (!fs::exists(fs::symlink_status(place))) continue;
        if (auto reason = why_not_private(fs::absolute(place)); !reason.empty()) return reason;
    }
    return "";
}

fs::path checked_log_dir(const fs::path& path) {
    auto whole = fs::absolute(path).lexically_normal();
    if (!whole.has_filename()) whole = whole.parent_path();
    // The interface's buffers have 256 bytes, for the directory, its "/" and the end.
    if (whole.string().size() > 254) fail(whole, "the path is longer than 254 bytes");
    if (const auto reason = why_not_ours(LogDir(whole)); !reason.empty())
        fail(whole, "it cannot be the log directory: " + reason);
    return whole;
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
