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

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
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
#include "qvhost/finish/lane_files.h"
#include "show/visible.h"

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

// Ends a collecting process that exceeds its limits. The process itself sees to the limits of its tools,
// so the watchdog bites only where the code of a module hangs.
class Watchdog {
public:
    explicit Watchdog(const Limits& limits) : limits_(limits) {}

    // Why the process must end now; empty: it may go on.
    std::string why_to_end(const CollectionState& state) {
        const auto now = Clock::now();
        // The host's own questions have as much time as a module. Before them there may be a wait for other lanes.
        const auto parts = state.modules.size() + (state.question.empty() ? 0 : 1);
        const bool waits = state.modules_ended && state.question.empty();
        if (parts != parts_) {
            parts_ = parts;
            part_start_ = now;
        }
        if (now - start_ >= std::chrono::seconds(limits_.run_seconds) + kGrace)
            return "it took longer than " + std::to_string(limits_.run_seconds) + " s";
        if (parts_ > 0 && !waits &&
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

// What a lane does just now. The tables of a module are filled together, so the command says more than the table.
std::string doing(const CollectionState& state, const std::filesystem::path& commands) {
    if (const auto command = running_command(commands); !command.empty()) return "ran " + command;
    return state.table.empty() ? "" : "collected " + state.table;
}

std::string while_doing(const std::string& what) { return what.empty() ? "" : " while it " + what; }

// A collecting child and what is known of it.
class LaneProcess {
public:
    LaneProcess(const CollectOptions& options, const Stage& stage, const sigset_t& blocked,
                const Limits& limits)
        : number_(options.lane),
          dir_(options.log_dir),
          imported_(dir_.journal(number_)),
          followed_(dir_.journal(number_)),
          watchdog_(limits),
          child_(start_child(options, stage, blocked)),
          handle_(static_cast<int>(::syscall(SYS_pidfd_open, child_.pid, 0))) {}

    pid_t pid() const { return child_.pid; }
    int handle() const { return handle_.get(); }
    bool runs() const { return !status_; }
    const CollectionState& state() const {
        return number_ == 1 ? imported_.state : followed_.state;
    }

    // Notes its end, if it has come. True: it died and may have left tools.
    bool has_died() {
        int status = 0;
        if (status_ || ::waitpid(child_.pid, &status, WNOHANG) != child_.pid) return false;
        status_ = status;
        return WIFSIGNALED(status);
    }

    // It is going to be killed with what it has started: why, and what stops it.
    void end(const std::string& problem, const std::string& stopped_by) {
        problem_ = problem;
        stopped_by_ = stopped_by;
        status_ = SIGKILL;
    }

    std::string why_to_end() { return watchdog_.why_to_end(state()); }
    std::string doing() const { return qvhost::doing(state(), dir_.commands(number_)); }

    // Takes what is new in its journal. Into the store it comes when the records of all lanes before are there, so
    // that the journal of a further lane is read twice.
    bool take_news(JournalImporter& importer, bool has_its_turn) {
        const bool is_news = number_ > 1 && followed_.follow();
        const bool is_imported = has_its_turn && importer.take_new(imported_);
        gives_no_more_ = imported_.state.modules_ended || (!runs() && has_its_turn && !is_imported);
        return is_news || is_imported;
    }

    // Whether all of its records are in the store.
    bool gives_no_more() const { return gives_no_more_; }

    void tell(char what) const {
        [[maybe_unused]] const auto written = ::write(child_.lifeline.get(), &what, 1);
    }

    const std::string& stopped_by() const { return stopped_by_; }

    // Why what it collected is incomplete; empty: it is not.
    std::string why_incomplete() const {
        if (!problem_.empty()) return problem_ + while_doing(doing());
        if (!stopped_by_.empty()) return "";
        if (state().end) {
            if (!state().end->error.empty()) return state().end->error;
            if (state().errors.empty()) return "";
            std::string text = "a module broke off:";
            for (const auto& error : state().errors) text += " " + error;
            return text;
        }
        const int status = status_.value_or(SIGKILL);
        if (WIFSIGNALED(status))
            return std::string("the collecting process was ended by ") +
                   ::strsignal(WTERMSIG(status)) + while_doing(doing());
        return "the collecting process ended early, with code " +
               std::to_string(WEXITSTATUS(status)) + while_doing(doing());
    }

private:
    unsigned number_;
    LogDir dir_;
    LaneJournal imported_;
    LaneJournal followed_;
    Watchdog watchdog_;
    Child child_;
    Descriptor handle_;
    std::optional<int> status_;  // its wait status; nothing: it runs
    std::string problem_;
    std::string stopped_by_;
    bool gives_no_more_ = false;
};

// The lanes of a collection, from their start to their end.
class Lanes {
public:
    Lanes(const CollectOptions& options, const std::vector<Lane>& lanes, const Stage& stage,
          const sigset_t& blocked)
        : options_(options), lanes_(lanes), stage_(stage), blocked_(blocked) {
        processes_.reserve(lanes.size());
        start_next();
        all_started_ = lanes.size() == 1;
    }

    // Starts all lanes but the first one when the journal of that is there: without it a collection that is broken off
    // has left nothing. If there is no process for a lane, the one before asks all modules that are left.
    void start_others(Progress& progress) {
        if (all_started_ || !std::filesystem::exists(LogDir(options_.log_dir).journal())) return;
        all_started_ = true;
        try {
            while (processes_.size() < lanes_.size()) start_next();
        } catch (const std::system_error& error) {
            const auto started = processes_.size();
            progress.no_lanes_behind(started);
            std::fprintf(stderr, "qvhost: lane %zu asks all modules that are left: %s\n", started,
                         one_line(error.what()).c_str());
        }
        for (const auto& lane : processes_) {
            const bool is_last = &lane == &processes_.back();
            lane.tell(is_last && processes_.size() < lanes_.size() ? kModulesBehindToo
                                                                   : kOwnModules);
        }
    }

    bool run() const {
        return std::any_of(processes_.begin(), processes_.end(),
                           [](const LaneProcess& lane) { return lane.runs(); });
    }

    // Waits until a child ends or a signal comes, for a moment at most.
    void wait(int signals, bool more) const {
        std::vector<pollfd> waiting{
            {signals, POLLIN, 0}
        };
        for (const auto& lane : processes_) {
            if (lane.runs()) waiting.push_back({lane.handle(), POLLIN, 0});
        }
        constexpr int kUsualMs = 100;
        constexpr int kStartMs = 5;
        ::poll(waiting.data(), waiting.size(), more ? 0 : all_started_ ? kUsualMs : kStartMs);
    }

    // Returns processes that cannot be killed.
    std::vector<pid_t> note_ends() {
        bool died = false;
        for (auto& lane : processes_) died = lane.has_died() || died;
        return died ? kill_all_but_lanes() : std::vector<pid_t>();
    }

    std::vector<pid_t> end_those_over_their_limits() {
        bool over = false;
        for (auto& lane : processes_) {
            const auto why = lane.runs() ? lane.why_to_end() : "";
            if (why.empty()) continue;
            lane.end(why, "run");
            over = true;
        }
        return over ? kill_all_but_lanes() : std::vector<pid_t>();
    }

    bool take_news(JournalImporter& importer) {
        bool more = false;
        bool has_its_turn = true;
        for (auto& lane : processes_) {
            const bool is_new = lane.take_news(importer, has_its_turn);
            more = more || is_new;
            has_its_turn = has_its_turn && lane.gives_no_more();
        }
        return more;
    }

    // The first lane waits for the end of the others. Before it goes on their logs are put behind its own. `more`:
    // not all that their journals tell is known yet.
    void let_first_go_on(bool more) {
        if (first_goes_on_ || more || !all_started_) return;
        auto& first = processes_.front();
        bool is_left = false;
        for (const auto& lane : processes_) {
            if (&lane == &first) continue;
            if (lane.runs() || !first.state().modules_ended) return;
            is_left = is_left || lane.state().device_is_left;
        }
        first_goes_on_ = true;
        join_lane_logs(LogDir(options_.log_dir));
        if (first.runs()) first.tell(is_left ? kLanesEndedDeviceLeft : kLanesEnded);
    }

    // Those that still run are going to be killed.
    void end_by_user() {
        for (auto& lane : processes_) {
            if (lane.runs()) lane.end("", "user");
        }
    }

    // `signal` came; 0: none did.
    Ending ending(int signal) const {
        Ending ending;
        std::vector<std::string> problems;
        if (signal != 0) {
            std::vector<std::string> all;
            for (const auto& lane : processes_) {
                auto what = lane.stopped_by() == "user" ? lane.doing() : "";
                if (!what.empty()) all.push_back(std::move(what));
            }
            problems.push_back(std::string("ended by ") + ::strsignal(signal) +
                               while_doing(boost::join(all, " and ")));
        }
        for (const auto& lane : processes_) {
            if (auto why = lane.why_incomplete(); !why.empty()) problems.push_back(std::move(why));
            ending.stopped_by.push_back(lane.stopped_by());
            ending.broken_off.merge(lane.state().broken_off());
        }
        ending.problem = boost::join(problems, "; ");
        return ending;
    }

    std::vector<LaneProgress> progress() const {
        std::vector<LaneProgress> lanes;
        for (const auto& lane : processes_) lanes.push_back({&lane.state(), !lane.runs()});
        return lanes;
    }

private:
    void start_next() {
        auto options = options_;
        options.lane = static_cast<unsigned>(processes_.size()) + 1;
        if (lanes_.size() > 1) {
            for (const auto& module : lanes_[processes_.size()])
                options.lane_modules.push_back(module.name);
        }
        processes_.emplace_back(options, stage_, blocked_, limits_for(options));
    }

    std::vector<pid_t> kill_all_but_lanes() const {
        std::vector<pid_t> lanes;
        for (const auto& lane : processes_) {
            if (lane.runs()) lanes.push_back(lane.pid());
        }
        return kill_descendants(lanes);
    }

    const CollectOptions& options_;
    const std::vector<Lane>& lanes_;
    const Stage& stage_;
    const sigset_t& blocked_;
    std::vector<LaneProcess> processes_;
    bool all_started_ = false;  // or nothing could start those that are not
    bool first_goes_on_ = false;
};

void warn_of(const std::vector<pid_t>& unkillable, Progress& progress) {
    for (const pid_t pid : unkillable) {
        progress.clear();
        std::fprintf(stderr, "qvhost: process %d cannot be killed and is left behind\n", pid);
    }
}

}  // namespace

Ending supervise(const CollectOptions& options, const std::vector<Lane>& lanes, const Stage& stage,
                 JournalImporter& importer, Progress& progress) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const EndSignals signals;
    Lanes all(options, lanes, stage, signals.mask_before());
    int signal = 0;
    bool more = false;
    while (all.run() && signal == 0) {
        all.start_others(progress);
        all.let_first_go_on(more);
        all.wait(signals.fd(), more);
        signal = signals.arrived();
        warn_of(all.note_ends(), progress);
        more = all.take_news(importer);
        progress.update(all.progress());
        warn_of(all.end_those_over_their_limits(), progress);
    }

    if (signal != 0) {
        signals.let_through();
        all.end_by_user();
    }
    if (signal != 0 || stage.kill_leftovers) warn_of(kill_descendants(), progress);
    while (all.take_news(importer)) {
        if (signals.arrived() != 0) signals.let_through();
    }
    progress.clear();
    join_lane_logs(LogDir(options.log_dir));
    return all.ending(signal);
}

}  // namespace qvhost
