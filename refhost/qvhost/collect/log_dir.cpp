#include "qvhost/collect/log_dir.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "qvhost/collect/trust.h"
#include "qvhost/complete/recover.h"
#include "store/store.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const fs::path& path, const std::string& reason) {
    throw std::runtime_error(path.string() + ": " + reason);
}

int open_directory(const fs::path& directory) {
    return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

void make_private_directory(const fs::path& path) {
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        fail(path, std::string("cannot make the directory: ") + std::strerror(errno));
    // mkdir() has taken the umask from it, which may hide the directory from its owner.
    if (errno != EEXIST) ::chmod(path.c_str(), 0700);
}

std::string when_it_started(const LogDir& dir) {
    try {
        return Store(dir.store(), Store::Mode::read).meta("started");
    } catch (const std::runtime_error&) {
        return "";
    }
}

fs::path free_name(const LogDir& dir, const std::string& started) {
    std::string stamp;
    for (const char c : started) {
        if (c != '-' && c != ':') stamp += c;
    }
    const auto base = dir.path() / ("report-" + (stamp.empty() ? "unfinished" : stamp));
    auto name = base;
    for (int i = 2; fs::exists(fs::symlink_status(name)); ++i)
        name = base.string() + "-" + std::to_string(i);
    return name;
}

}  // namespace

DirLock::DirLock(const fs::path& directory) : fd_(open_directory(directory)) {
    if (fd_ < 0) fail(directory, std::strerror(errno));
    if (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd_);
        fail(directory, "another collection is running in this directory");
    }
}

DirLock::~DirLock() { ::close(fd_); }

bool DirLock::is_held(const fs::path& directory) {
    const int fd = open_directory(directory);
    if (fd < 0) return false;
    const bool held = ::flock(fd, LOCK_SH | LOCK_NB) != 0;
    ::close(fd);
    return held;
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
    errno = 0;
    make_private_directory(whole);
    return checked_log_dir(whole);  // now that it is there
}

std::string make_room_for_report(const LogDir& dir) {
    std::string found;
    if (fs::exists(fs::symlink_status(dir.report()))) {
        const auto recovered = recover(dir);
        const auto started = when_it_started(dir);
        const auto aside = free_name(dir, started);
        std::error_code ignored;
        fs::rename(dir.log(), dir.report() / dir.log().filename(), ignored);
        fs::rename(dir.report(), aside);
        found = (recovered.empty() ? "an earlier report" + (started.empty() ? "" : " of " + started)
                                   : recovered) +
                "; it is now in " + aside.string();
    }
    errno = 0;
    make_private_directory(dir.report());
    return found;
}

}  // namespace qvhost
