#include "qvhost/base/machine_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostBytes = 1024;  // of what the file tells

[[noreturn]] void fail(const fs::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + ": the machine cannot be locked: " + reason);
}

// "process 4711 since 2026-11-22T01:00:00Z, collecting into /var/lib/qvhost/runs"
std::string note(const std::string& purpose) {
    const auto now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    const auto text =
        "process " + std::to_string(::getpid()) + " since " + time.data() + ", " + purpose;
    return text.substr(0, kMostBytes);
}

// Empty if its holder has not noted itself yet.
std::string noted_in(int file) {
    std::array<char, kMostBytes> text{};
    const auto bytes = ::pread(file, text.data(), text.size(), 0);
    return bytes > 0 ? std::string(text.data(), static_cast<std::size_t>(bytes)) : "";
}

}  // namespace

fs::path machine_lock_file() {
    const char* const file = std::getenv("QVHOST_LOCK");
    return file ? file : "/run/qvhost.lock";
}

MachineLock::MachineLock(const fs::path& file, const std::string& purpose)
    : file_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600)) {
    struct stat info {};
    if (!file_ || ::fstat(file_.get(), &info) != 0) fail(file, std::strerror(errno));
    if (!S_ISREG(info.st_mode)) fail(file, "it is no regular file");
    if (info.st_uid != ::geteuid()) fail(file, "it belongs to another user");
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK) fail(file, std::strerror(errno));
        const auto holder = noted_in(file_.get());
        throw MachineBusy("another run asks this machine: " +
                          (holder.empty() ? "one that has just begun" : holder));
    }
    const auto text = note(purpose);
    if (::ftruncate(file_.get(), 0) != 0 ||
        ::pwrite(file_.get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        fail(file, std::strerror(errno));
}

}  // namespace qvhost
