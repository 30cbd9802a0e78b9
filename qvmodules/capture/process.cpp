#include "capture/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "capture/command_log.h"

namespace marlox::repository::capture {

namespace {

using Clock = std::chrono::steady_clock;
using Deadline = std::optional<Clock::time_point>;
using std::chrono::milliseconds;

// A process that is still there this long after SIGKILL hangs inside the kernel; it is left behind.
constexpr auto kDyingTime = std::chrono::seconds(5);

std::optional<std::chrono::seconds> seconds_from(const char* variable) {
    const char* value = std::getenv(variable);
    if (!value) return std::nullopt;
    const std::string_view text = value;
    int seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc() || end != text.data() + text.size() || seconds <= 0)
        return std::nullopt;
    return std::chrono::seconds(seconds);
}

Deadline deadline_for(Patience patience) {
    auto limit = seconds_from("QV_TOOL_TIMEOUT");
    if (patience == Patience::archive && seconds_from("QV_ARCHIVE_TIMEOUT"))
        limit = seconds_from("QV_ARCHIVE_TIMEOUT");
    if (!limit) return std::nullopt;
    return Clock::now() + *limit;
}

// What poll() takes: -1 without a deadline, else what is left, rounded up.
int time_left(const Deadline& deadline) {
    if (!deadline) return -1;
    const auto left = std::chrono::ceil<milliseconds>(*deadline - Clock::now());
    return static_cast<int>(std::clamp<milliseconds::rep>(left.count(), 0, 1'000'000'000));
}

// Waits until `fd` has something to say. False: the deadline passed first.
bool wait_readable(int fd, const Deadline& deadline) {
    for (;;) {
        pollfd waiting{fd, POLLIN, 0};
        const int n = ::poll(&waiting, 1, time_left(deadline));
        if (n > 0) return true;
        if (n == 0) return false;
        if (errno != EINTR) return true;
    }
}

std::optional<int> try_reap(pid_t pid, int flags) {
    for (;;) {
        int status = 0;
        const pid_t reaped = ::waitpid(pid, &status, flags);
        if (reaped == pid) return status;
        if (reaped == 0) return std::nullopt;
        if (errno != EINTR) return -1;  // somebody else has reaped it: the status is unknown
    }
}

// The wait status, or nothing when the deadline passed first.
std::optional<int> reap(pid_t pid, const Deadline& deadline) {
    if (!deadline) return try_reap(pid, 0);

    // glibc 2.36 declares pidfd_open() without C linkage.
    const int handle = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (handle >= 0) {
        const bool ended = wait_readable(handle, deadline);
        ::close(handle);
        return try_reap(pid, ended ? 0 : WNOHANG);
    }
    // A kernel without process handles, or no descriptor left.
    for (;;) {
        if (auto status = try_reap(pid, WNOHANG)) return status;
        if (time_left(deadline) == 0) return std::nullopt;
        std::this_thread::sleep_for(milliseconds(10));
    }
}

int reap_or_kill(pid_t pid, const Deadline& deadline) {
    if (auto status = reap(pid, deadline)) return *status;
    ::kill(-pid, SIGKILL);
    return reap(pid, Clock::now() + kDyingTime).value_or(SIGKILL);
}

// What the started shell is given beyond the command.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    void standard_output(int fd) { posix_spawn_file_actions_adddup2(&actions_, fd, 1); }

    void signals(const sigset_t& mask, const sigset_t& to_default) {
        posix_spawnattr_setsigmask(&attributes_, &mask);
        posix_spawnattr_setsigdefault(&attributes_, &to_default);
        flags_ |= POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    }

    // Only what may have to be killed as a whole leaves the host's process group: without a limit a
    // Ctrl-C at the terminal reaches the tool, as with system().
    void own_process_group() {
        posix_spawnattr_setpgroup(&attributes_, 0);
        flags_ |= POSIX_SPAWN_SETPGROUP;
    }

    // The pid, or minus the error number.
    pid_t start(const std::string& command) {
        posix_spawn_file_actions_addclosefrom_np(&actions_, 3);
        posix_spawnattr_setflags(&attributes_, static_cast<short>(flags_));
        std::string shell = "sh";
        std::string option = "-c";
        std::string text = command;
        char* const arguments[] = {shell.data(), option.data(), text.data(), nullptr};
        pid_t pid = 0;
        const int error =
            ::posix_spawn(&pid, "/bin/sh", &actions_, &attributes_, arguments, environ);
        return error == 0 ? pid : -error;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
    int flags_ = 0;
};

// While a command runs, the host behaves as in system(): the terminal's signals are the command's.
class SignalsAside {
public:
    SignalsAside() {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        ::sigaction(SIGINT, &ignore, &interrupt_);
        ::sigaction(SIGQUIT, &ignore, &quit_);

        sigset_t child;
        sigemptyset(&child);
        sigaddset(&child, SIGCHLD);
        ::pthread_sigmask(SIG_BLOCK, &child, &mask_);
    }
    ~SignalsAside() {
        ::sigaction(SIGINT, &interrupt_, nullptr);
        ::sigaction(SIGQUIT, &quit_, nullptr);
        ::pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    }
    SignalsAside(const SignalsAside&) = delete;
    SignalsAside& operator=(const SignalsAside&) = delete;

    const sigset_t& mask_before() const { return mask_; }

    sigset_t handled_before() const {
        sigset_t handled;
        sigemptyset(&handled);
        if (interrupt_.sa_handler != SIG_IGN) sigaddset(&handled, SIGINT);
        if (quit_.sa_handler != SIG_IGN) sigaddset(&handled, SIGQUIT);
        return handled;
    }

private:
    struct sigaction interrupt_ = {};
    struct sigaction quit_ = {};
    sigset_t mask_ = {};
};

constexpr int kShellNotFound = 127 << 8;  // as if the shell had exited with 127

bool out_of_resources(int error) {
    return error == EAGAIN || error == ENOMEM || error == EMFILE || error == ENFILE;
}

}  // namespace

int run(const std::string& command, Patience patience) {
    const SignalsAside aside;
    const Deadline deadline = deadline_for(patience);

    SpawnSettings settings;
    settings.signals(aside.mask_before(), aside.handled_before());
    if (deadline) settings.own_process_group();

    const LoggedCommand logged(command);
    const pid_t pid = settings.start(command);
    const int status = pid >= 0                 ? reap_or_kill(pid, deadline)
                       : out_of_resources(-pid) ? -1
                                                : kShellNotFound;
    logged.ended(status);
    return status;
}

std::optional<std::string> output_of(const std::string& command, std::size_t most) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    const auto [reading, writing] = ends;
    const Deadline deadline = deadline_for(Patience::tool);

    SpawnSettings settings;
    settings.standard_output(writing);
    if (deadline) settings.own_process_group();
    const LoggedCommand logged(command);
    const pid_t pid = settings.start(command);
    ::close(writing);
    if (pid < 0) {
        logged.ended(-1);
        ::close(reading);
        return std::nullopt;
    }

    std::string text(most, '\0');
    std::size_t size = 0;
    while (size < most && wait_readable(reading, deadline)) {
        const ssize_t n = ::read(reading, text.data() + size, most - size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        size += static_cast<std::size_t>(n);
    }
    ::close(reading);
    logged.ended(reap_or_kill(pid, deadline));
    text.resize(size);
    return text;
}

}  // namespace marlox::repository::capture
