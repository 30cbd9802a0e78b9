#include "runner/standard_error.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "runner/command_log.h"

namespace runner {

namespace {

// Whether all could be written. A reader of standard error that has gone away must not end the host.
class Output {
public:
    Output() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
        sigset_t pending;
        sigpending(&pending);
        was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    }
    ~Output() {
        const timespec now{};
        if (broken_ && !was_pending_) ::sigtimedwait(&pipe_, nullptr, &now);
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool write(const char* bytes, std::size_t size) {
        while (size > 0) {
            const ssize_t n = ::write(STDERR_FILENO, bytes, size);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                broken_ = n < 0 && errno == EPIPE;
                return false;
            }
            bytes += n;
            size -= static_cast<std::size_t>(n);
        }
        return true;
    }

private:
    sigset_t pipe_ = {};
    sigset_t before_ = {};
    bool was_pending_ = false;
    bool broken_ = false;
};

// Some file systems cannot make a file without a name.
int file_without_name(const std::filesystem::path& directory) {
    const int fd = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_APPEND | O_CLOEXEC, 0600);
    if (fd >= 0) return fd;
    auto name = (directory / ".stderr-XXXXXX").string();
    const int named = ::mkostemp(name.data(), O_APPEND | O_CLOEXEC);
    if (named >= 0) ::unlink(name.c_str());
    return named;
}

}  // namespace

KeptStandardError::KeptStandardError() {
    if (const char* log = std::getenv("QV_COMMAND_LOG"))
        fd_ = file_without_name(std::filesystem::path(log).parent_path());
}

KeptStandardError::~KeptStandardError() {
    if (fd_ >= 0) ::close(fd_);
}

std::string KeptStandardError::pass_on() const {
    std::string kept;
    if (fd_ < 0) return kept;
    Output output;
    char block[65536];
    for (off_t at = 0;;) {
        const ssize_t n = ::pread(fd_, block, sizeof block, at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        at += n;
        kept.append(block, std::min(static_cast<std::size_t>(n), kLoggedErrorBytes - kept.size()));
        if (!output.write(block, static_cast<std::size_t>(n))) break;
    }
    return kept;
}

}  // namespace runner
