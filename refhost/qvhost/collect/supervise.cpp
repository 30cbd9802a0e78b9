#include "qvhost/collect/supervise.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
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
#include <utility>

#include "files/descriptor.h"
#include "processes/processes.h"
#include "qvhost/base/collect_options.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/collect/child.h"
#include "qvhost/finish/commands.h"

namespace qvhost {

namespace {

// The signals that ask the program to end, as a descriptor to wait for.
class EndSignals {
public:
    EndSignals() {
        sigemptyset(&ends_);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction current = {};
            ::sigaction(signal, nullptr, &current);
            // nohup(1) and background jobs ignore some of them, which stays so.
            if (current.sa_handler != SIG_IGN) sigaddset(&ends_, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &ends_, &before_);
        file_ = Descriptor(::signalfd(-1, &ends_, SFD_CLOEXEC | SFD_NONBLOCK));
    }
    ~EndSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

    int fd() const { return file_.get(); }
    const sigset_t& mask_before() const { return before_; }

    // The signal that came, or 0.
    int arrived() const {
        signalfd_siginfo info{};
        return ::read(file_.get(), &info, sizeof info) == sizeof info
                   ? static_cast<int>(info.ssi_signo)
                   : 0;
    }

    // From here on such a signal ends the program at once.
    void let_through() const { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t ends_ = {};
    sigset_t before_ = {};
    Descriptor file_;
};

// A file in memory, positioned at its beginning.
Descriptor memory_file(const std::string& text) {
    Descriptor file(::memfd_create("qvhost-settings", MFD_CLOEXEC));
    if (!file || !write_bytes(file.get(), text) || ::lseek(file.get(), 0, SEEK_SET) != 0)
        throw std::system_error(errno, std::generic_category(), "a file in memory");
    return file;
}

struct Child {
    pid_t pid;
    Descriptor lifeline;  // the child ends when this closes
};

Child start_child(const CollectOptions& options, const Stage& stage, const sigset_t& blocked) {
    const auto settings = memory_file(settings_of(options));
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const Descriptor childs_end(ends[0]);
    Descriptor lifeline(ends[1]);
    const std::string numbers[] = {std::to_string(settings.get()),
                                   std::to_string(childs_end.get())};
    const pid_t pid = start_process({
        .program = stage.program.string(),
        .arguments = {kChildCommand, numbers[0],          numbers[1]},
        .descriptors = {{settings.get(), settings.get()},             {childs_end.get(), childs_end.get()}},
        .blocked = blocked
    });
    return {pid, std::move(lifeline)};
}

// The child's wait status if it has ended.
std::optional<int> ended(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, WNOHANG) == child ? std::optional(status) : std::nullopt;
}

// Ends a collecting process that exceeds its limits. The process itself sees to the limits of its tools,
// so the watchdog bites only where the code of a module hangs.
class Watchdog {
public:
    explicit Watchdog(const Limits& limits) : limits_(limits) {}

    // Why the collection must end now; empty: it may go on.
    std::string why_to_end(const CollectionState& state) {
        const auto now = Clock::now();
        // The host's own questions have as much time as a module.
        const auto parts = state.modules.size() + (state.question.empty() ? 0 : 1);
        if (parts != parts_) {
            parts_ = parts;
            part_start_ = now;
        }
        if (now - start_ >= std::chrono::seconds(limits_.run_seconds) + kGrace)
            return "it took longer than " + std::to_string(limits_.run_seconds) + " s";
        if (parts_ > 0 &&
            now - part_start_ >= std::chrono::seconds(limits_.module_seconds) + kGrace)
            return (state.question.empty() ? state.modules.back()
                                           : "what " + state.question + " was asked") +
                   " took longer than " + std::to_string(limits_.module_seconds) + " s";
        return "";
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kGrace =
        std::chrono::seconds(8);  // for the tools to be killed and the module to return

    Limits limits_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point part_start_ = start_;
    std::size_t parts_ = 0;  // modules that were begun, and the host's own questions
};

// The tables of a module are filled together, so the command says more than the table.
std::string place(const CollectionState& state, const LogDir& dir) {
    if (const auto command = running_command(dir.commands()); !command.empty())
        return " while it ran " + command;
    return state.table.empty() ? "" : " while it collected " + state.table;
}

std::string why_incomplete(int status, const CollectionState& state, const LogDir& dir) {
    if (state.end) {
        if (!state.end->error.empty()) return state.end->error;
        if (state.errors.empty()) return "";
        std::string text = "a module broke off:";
        for (const auto& error : state.errors) text += " " + error;
        return text;
    }
    if (WIFSIGNALED(status))
        return std::string("the collecting process was ended by ") + ::strsignal(WTERMSIG(status)) +
               place(state, dir);
    return "the collecting process ended early, with code " + std::to_string(WEXITSTATUS(status)) +
           place(state, dir);
}

}  // namespace

Ending supervise(const CollectOptions& options, const Stage& stage, JournalImporter& importer,
                 Progress& progress) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const EndSignals signals;

    const auto child = start_child(options, stage, signals.mask_before());
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, child.pid, 0)));

    int signal = 0;
    std::optional<int> status;
    Watchdog watchdog(limits_for(options));
    std::string overrun;
    bool more = false;
    while (!status && signal == 0 && overrun.empty()) {
        pollfd waiting[] = {
            {handle.get(), POLLIN, 0},
            {signals.fd(), POLLIN, 0}
        };
        ::poll(waiting, 2, more ? 0 : 100);
        signal = signals.arrived();
        status = ended(child.pid);
        more = importer.take_new();
        progress.update(importer.state());
        overrun = watchdog.why_to_end(importer.state());
    }

    if (signal != 0) signals.let_through();
    if (!status || WIFSIGNALED(*status) || stage.kill_leftovers) {
        const auto unkillable = kill_descendants();
        for (const pid_t pid : unkillable) {
            progress.clear();
            std::fprintf(stderr, "qvhost: process %d cannot be killed and is left behind\n", pid);
        }
    }
    while (importer.take_new()) {
        if (signals.arrived() != 0) signals.let_through();
    }
    progress.clear();
    const LogDir dir(options.log_dir);
    const auto& state = importer.state();
    if (!overrun.empty()) return {overrun + place(state, dir), "run"};
    if (signal != 0)
        return {std::string("ended by ") + ::strsignal(signal) + place(state, dir), "user"};
    return {why_incomplete(*status, state, dir)};
}

}  // namespace qvhost
