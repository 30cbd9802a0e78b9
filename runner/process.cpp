#include "runner/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "runner/command_log.h"
#include "runner/device.h"
#include "runner/group.h"
#include "runner/standard_error.h"
#include "runner/written_files.h"

namespace runner {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A process that still exists this long after SIGKILL hangs inside the kernel and is left behind.
constexpr auto kKillTimeout = std::chrono::seconds(5);

// Waits until `fd` is readable and returns null, or returns why a limit ended the wait.
const char* wait_readable(int fd, Limits& limits, const Running& running) {
    for (;;) {
        pollfd waiting{fd, POLLIN, 0};
        const int n = ::poll(&waiting, 1, limits.interval());
        if (n > 0 || (n < 0 && errno != EINTR)) return nullptr;
        if (const char* reason = limits.exceeded(&running)) return reason;
    }
}

std::optional<int> try_reap(pid_t pid, int flags) {
    for (;;) {
        int status = 0;
        const pid_t reaped = ::waitpid(pid, &status, flags);
        if (reaped == pid) return status;
        if (reaped == 0) return std::nullopt;
        if (errno != EINTR) return -1;  // the host has reaped it: the status is unknown
    }
}

struct Outcome {
    int status = 0;
    const char* reason = nullptr;  // why it was stopped; null: it ended by itself
    std::vector<pid_t> left = {};  // processes that could not be ended
};

// Waits for the end of a command that has limits.
Outcome reap_within(pid_t pid, Limits& limits, const Running& running) {
    // glibc 2.36 declares pidfd_open() without C linkage.
    const int handle = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (handle >= 0) {
        const char* reason = wait_readable(handle, limits, running);
        ::close(handle);
        if (reason) return {0, reason};
        return {try_reap(pid, 0).value_or(-1)};
    }
    // A kernel without process handles, or no descriptor left.
    for (;;) {
        if (const auto status = try_reap(pid, WNOHANG)) return {*status};
        if (const char* reason = limits.exceeded(&running)) return {0, reason};
        std::this_thread::sleep_for(milliseconds(10));
    }
}

// Kills all of the command's processes: the shell may have ended before its tool. `status` is the shell's, if
// it has ended.
Outcome kill_all(pid_t pid, const CommandProcesses& processes, const char* reason,
                 std::optional<int> status = std::nullopt) {
    const auto end = Clock::now() + kKillTimeout;
    for (;;) {
        processes.kill();
        if (!status) status = try_reap(pid, WNOHANG);
        processes.reap_adopted();
        auto left = processes.members();
        if ((status && left.empty()) || Clock::now() >= end)
            return {status.value_or(SIGKILL), reason, std::move(left)};
        std::this_thread::sleep_for(milliseconds(5));
    }
}

Outcome reap(pid_t pid, const std::string& command, Limits& limits, const Running& running) {
    const auto& processes = running.processes;
    auto end =
        limits.any() ? reap_within(pid, limits, running) : Outcome{try_reap(pid, 0).value_or(-1)};
    if (end.reason) return kill_all(pid, processes, end.reason);
    if (processes.end_with_command() && !starts_service(command))
        end = kill_all(pid, processes, nullptr, end.status);
    end.reason = limits.bounds().exceeded_at_end(running.files);
    return end;
}

// The signals, descriptors and process group that the shell is started with.
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

    void standard_error(const KeptStandardError& kept) {
        if (kept.fd() >= 0) posix_spawn_file_actions_adddup2(&actions_, kept.fd(), 2);
    }

    void signals(const sigset_t& mask, const sigset_t& to_default) {
        posix_spawnattr_setsigmask(&attributes_, &mask);
        posix_spawnattr_setsigdefault(&attributes_, &to_default);
        flags_ |= POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    }

    // Only for commands that have a limit, since they may have to be killed as a group. Others stay
    // in the host's group, where Ctrl-C at the terminal reaches them, as with system().
    void own_process_group() {
        posix_spawnattr_setpgroup(&attributes_, 0);
        flags_ |= POSIX_SPAWN_SETPGROUP;
    }

    // The pid, or minus the error number. A service stays, and may write as much as it wants.
    pid_t start(const std::string& command, Bounds& bounds) {
        const ScopedFileSize size(starts_service(command) ? std::nullopt : bounds.file_bytes());
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

// Ignores SIGINT and SIGQUIT and blocks SIGCHLD while a command runs, as system() does: the terminal's
// signals are for the command.
class ScopedSignalBlock {
public:
    ScopedSignalBlock() {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        ::sigaction(SIGINT, &ignore, &interrupt_);
        ::sigaction(SIGQUIT, &ignore, &quit_);

        sigset_t child;
        sigemptyset(&child);
        sigaddset(&child, SIGCHLD);
        ::pthread_sigmask(SIG_BLOCK, &child, &mask_);
    }
    ~ScopedSignalBlock() {
        ::sigaction(SIGINT, &interrupt_, nullptr);
        ::sigaction(SIGQUIT, &quit_, nullptr);
        ::pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    }
    ScopedSignalBlock(const ScopedSignalBlock&) = delete;
    ScopedSignalBlock& operator=(const ScopedSignalBlock&) = delete;

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

constexpr int kShellNotFound = 127 << 8;  // the wait status of a shell that exits with 127

bool out_of_resources(int error) {
    return error == EAGAIN || error == ENOMEM || error == EMFILE || error == ENFILE;
}

// Whether the text holds a whole line that is not blank.
bool has_line(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\n\v\f\r");
    return begin != std::string_view::npos && text.find('\n', begin) != std::string_view::npos;
}

// Why the command is not started; null: it is.
const char* why_not_to_start(const std::string& command, Limits& limits) {
    const char* reason = limits.exceeded(nullptr);
    if (!reason && is_left(command)) reason = kUnanswered;
    if (reason) {
        log_not_started(command, reason);
        note_not_started(command);
    }
    return reason;
}

// What the log keeps of a command beside its times and its end.
class Observed {
public:
    Observed(const std::string& command, const Limits& limits, bool asked_by_runner = false)
        : command_(command),
          files_(is_logging() || limits.bounds().any(), command),
          log_(command, limits.longest(), asked_by_runner) {
        note_started(command);
    }

    const KeptStandardError& standard_error() const { return standard_error_; }
    const WrittenFiles& files() const { return files_; }

    void ended(const Outcome& end) const {
        if (end.status == -1) note_not_started(command_);
        if (is_logging()) {
            log_.wrote(files_.changed());
            log_.said(standard_error_.pass_on());
        }
        log_.ended(end.status, end.reason, end.left);
    }

private:
    const std::string& command_;
    WrittenFiles files_;
    KeptStandardError standard_error_;
    LoggedCommand log_;
};

Outcome run_within(const std::string& command, Limits& limits, bool asked_by_runner) {
    const Observed observed(command, limits, asked_by_runner);
    const ScopedSignalBlock block;
    SpawnSettings settings;
    settings.standard_error(observed.standard_error());
    settings.signals(block.mask_before(), block.handled_before());
    if (limits.any()) settings.own_process_group();

    CommandProcesses processes;
    const pid_t pid = settings.start(command, limits.bounds());
    processes.started(pid);
    auto end = pid >= 0                 ? reap(pid, command, limits, {processes, observed.files()})
               : out_of_resources(-pid) ? Outcome{-1}
                                        : Outcome{kShellNotFound};
    observed.ended(end);
    return end;
}

}  // namespace

int run(const std::string& command, TimeoutKind kind) {
    Limits limits(kind, command);
    if (why_not_to_start(command, limits)) return SIGKILL;
    const auto end = run_within(command, limits, false);
    if (const auto question = question_after(command, end.status, end.reason)) {
        Limits short_limits(TimeoutKind::question, *question);
        const auto answer = run_within(*question, short_limits, true);
        note_answer(answer.status, answer.reason);
    }
    if (end.reason == kFileTooLarge) return 0;  // what it has written is to be read
    return end.status;
}

std::optional<std::string> output_of(const std::string& command, std::size_t most) {
    Limits limits(TimeoutKind::tool, command);
    if (why_not_to_start(command, limits)) return std::nullopt;
    const Observed observed(command, limits);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        observed.ended({-1});
        return std::nullopt;
    }
    const auto [reading, writing] = ends;

    SpawnSettings settings;
    settings.standard_output(writing);
    settings.standard_error(observed.standard_error());
    if (limits.any()) settings.own_process_group();
    CommandProcesses processes;
    const Running running{processes, observed.files()};
    const pid_t pid = settings.start(command, limits.bounds());
    processes.started(pid);
    ::close(writing);
    if (pid < 0) {
        observed.ended({-1});
        ::close(reading);
        return std::nullopt;
    }

    std::string text;
    std::string block(most, '\0');
    const char* reason = nullptr;
    while (text.size() < most && !has_line(text) &&
           !(reason = wait_readable(reading, limits, running))) {
        const ssize_t n = ::read(reading, block.data(), most - text.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        text.append(block, 0, static_cast<std::size_t>(n));
    }
    ::close(reading);
    const auto end =
        reason ? kill_all(pid, processes, reason) : reap(pid, command, limits, running);
    observed.ended(end);
    return text;
}

}  // namespace runner
