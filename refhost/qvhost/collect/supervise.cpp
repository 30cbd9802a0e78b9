#include "qvhost/collect/supervise.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "qvhost/base/processes.h"
#include "qvhost/collect/child.h"

namespace qvhost {

namespace {

class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd_; }
    void reset() {
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
    }

private:
    int fd_;
};

// The signals that ask the program to end, as something to wait for.
class EndSignals {
public:
    EndSignals() {
        sigemptyset(&ends_);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction current = {};
            ::sigaction(signal, nullptr, &current);
            // nohup(1) and background jobs have some of them ignored, and mean it.
            if (current.sa_handler != SIG_IGN) sigaddset(&ends_, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &ends_, &before_);
        fd_ = ::signalfd(-1, &ends_, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    ~EndSignals() {
        ::close(fd_);
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

    int fd() const { return fd_; }
    const sigset_t& mask_before() const { return before_; }

    // The signal that came, or 0.
    int arrived() const {
        signalfd_siginfo info{};
        return ::read(fd_, &info, sizeof info) == sizeof info ? static_cast<int>(info.ssi_signo)
                                                              : 0;
    }

    // From here on a signal to end does what it does by default.
    void let_through() const { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t ends_ = {};
    sigset_t before_ = {};
    int fd_ = -1;
};

pid_t start(const Stage& stage, const std::vector<std::string>& arguments, const sigset_t& mask) {
    std::vector<std::string> texts{stage.program.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &mask);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t pid = 0;
    const int error =
        ::posix_spawn(&pid, stage.program.c_str(), nullptr, &attributes, pointers.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0)
        throw std::system_error(error, std::generic_category(),
                                "cannot start " + stage.program.string());
    return pid;
}

// The child's wait status if it has ended.
std::optional<int> ended(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, WNOHANG) == child ? std::optional(status) : std::nullopt;
}

// What keeps the collecting process's own code within the limits: its tools it keeps there itself.
class Overdue {
public:
    explicit Overdue(const Limits& limits) : limits_(limits) {}

    // Why the collection must end now; empty: it need not.
    std::string verdict(const Standing& standing) {
        const auto now = Clock::now();
        if (standing.modules.size() != modules_) {
            modules_ = standing.modules.size();
            module_start_ = now;
        }
        if (now - start_ >= std::chrono::seconds(limits_.run) + kGrace)
            return "it took longer than " + std::to_string(limits_.run) + " s";
        if (modules_ > 0 && now - module_start_ >= std::chrono::seconds(limits_.module) + kGrace)
            return standing.modules.back() + " took longer than " + std::to_string(limits_.module) +
                   " s";
        return "";
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kGrace = std::chrono::seconds(8);  // for tools to die, and what follows

    Limits limits_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point module_start_ = start_;
    std::size_t modules_ = 0;
};

std::string place(const Standing& standing) {
    return standing.table.empty() ? "" : " while it collected " + standing.table;
}

std::string judged(int status, const Standing& standing) {
    if (standing.end) {
        if (!standing.end->error.empty()) return standing.end->error;
        if (standing.errors.empty()) return "";
        std::string text = "a module broke off:";
        for (const auto& error : standing.errors) text += " " + error;
        return text;
    }
    if (WIFSIGNALED(status))
        return std::string("the collecting process was ended by ") + ::strsignal(WTERMSIG(status)) +
               place(standing);
    return "the collecting process ended early, with code " + std::to_string(WEXITSTATUS(status)) +
           place(standing);
}

}  // namespace

std::string supervise(const CollectOptions& options, const Stage& stage, Filler& filler,
                      Progress& progress) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const EndSignals signals;

    int ends[2];
    if (::pipe(ends) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    Descriptor childs_end(ends[0]);
    const Descriptor lifeline(ends[1]);
    ::fcntl(lifeline.get(), F_SETFD, FD_CLOEXEC);
    const pid_t child =
        start(stage, child_arguments(options, stage, childs_end.get()), signals.mask_before());
    childs_end.reset();
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));

    int signal = 0;
    std::optional<int> status;
    Overdue overdue(limits_for(options.limits));
    std::string verdict;
    bool more = false;
    while (!status && signal == 0 && verdict.empty()) {
        pollfd waiting[] = {
            {handle.get(),     POLLIN, 0},
            {signals.fd(),     POLLIN, 0},
            {progress.watch(), POLLIN, 0}
        };
        ::poll(waiting, 3, more ? 0 : 100);
        signal = signals.arrived();
        status = ended(child);
        more = filler.take_new();
        progress.update(filler.standing());
        verdict = overdue.verdict(filler.standing());
    }

    if (signal != 0) signals.let_through();
    if (!status || WIFSIGNALED(*status) || stage.kill_leftovers) {
        const auto unkillable = kill_descendants();
        for (const pid_t pid : unkillable) {
            progress.clear();
            std::fprintf(stderr, "qvhost: process %d cannot be killed and is left behind\n", pid);
        }
    }
    while (filler.take_new()) {
        if (signals.arrived() != 0) signals.let_through();
    }
    progress.clear();
    if (!verdict.empty()) return verdict + place(filler.standing());
    if (signal != 0)
        return std::string("ended by ") + ::strsignal(signal) + place(filler.standing());
    return judged(*status, filler.standing());
}

}  // namespace qvhost
