#include "qvhost/collect/child.h"

#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

#include "ask/ask.h"
#include "compat/layer.h"
#include "files/new_file.h"
#include "files/sync.h"
#include "inventory/exit_codes.h"
#include "journal/journal.h"
#include "logger/control.h"
#include "processes/processes.h"
#include "qvhost/base/collect_options.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/plugin.h"
#include "qvhost/base/program_place.h"
#include "qvhost/base/trust.h"
#include "qvhost/collect/selection.h"
#include "qvhost/finish/commands.h"
#include "repository/sink.h"
#include "runner/command_log.h"
#include "runner/process.h"
#include "xmodule.h"

namespace qvhost {

namespace {

using marlox::repository::RInstancesWrapper;
using marlox::repository::RModule;
using marlox::repository::RRepository;

class JournalSink : public RRepository::Impl {
public:
    // A table gets records of `table_bytes` in the journal, and those behind them are dropped.
    JournalSink(JournalWriter& journal, std::size_t table_bytes)
        : journal_(journal), table_bytes_(table_bytes) {}

    void add(const Record& record) override {
        auto& used = used_[record.table];
        if (used >= table_bytes_) {
            cut_.insert(record.table);
            return;
        }
        try {
            const auto before = journal_.size();
            journal_.append(record);
            used += journal_.size() - before;
        } catch (const std::exception& error) {
            if (failure_.empty()) failure_ = error.what();
            throw;
        }
    }

    // Why a record could not be kept, even if the module caught the exception; empty: all were kept.
    const std::string& failure() const { return failure_; }

    // Why the table lacks records; empty: it has all.
    std::string why_cut(const std::string& table) const {
        return cut_.contains(table) ? kRecordsCut : "";
    }

private:
    JournalWriter& journal_;
    std::size_t table_bytes_;
    std::unordered_map<std::string, std::size_t> used_;
    std::set<std::string> cut_;
    std::string failure_;
};

// What tools print on the terminal, and not into their captures, goes into a file.
void redirect_standard_streams(const std::filesystem::path& file) {
    const Descriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (!nothing) throw std::system_error(errno, std::generic_category(), "/dev/null");
    std::filesystem::remove(file);
    const auto console = create_private(file, O_WRONLY | O_APPEND);
    ::dup2(nothing.get(), STDIN_FILENO);
    ::dup2(console.get(), STDOUT_FILENO);
    ::dup2(console.get(), STDERR_FILENO);
}

// The settings that the parent wrote.
std::string read_settings(const Descriptor& file) {
    struct stat info {};
    if (::fstat(file.get(), &info) != 0)
        throw std::system_error(errno, std::generic_category(), "the settings");
    return read_bytes(file.get(), static_cast<std::size_t>(info.st_size));
}

sem_t thread_stopped;

// What the parent has said, word by word.
sem_t word_came;
std::array<std::atomic<char>, 2> words = {};

void take_word(char word) {
    static std::size_t came = 0;
    if (came == words.size()) return;
    words[came++] = word;
    ::sem_post(&word_came);
}

// The next word of the parent's, which is waited for.
char next_word() {
    static std::size_t heard = 0;
    while (::sem_wait(&word_came) != 0 && errno == EINTR) {
    }
    return words.at(heard++);
}

// The collecting thread stops here when the parent is gone.
void stop_here(int) {
    ::sem_post(&thread_stopped);
    for (;;) ::pause();
}

// Stops the thread that runs the modules. It would take a killed tool for a failed one and start the
// next tool.
void stop_thread(pthread_t thread) {
    ::pthread_kill(thread, SIGRTMIN);
    timespec give_up{};
    ::clock_gettime(CLOCK_REALTIME, &give_up);
    give_up.tv_sec += 1;
    while (::sem_timedwait(&thread_stopped, &give_up) != 0 && errno == EINTR) {
    }
}

void end_with_parent(int lifeline) {
    ::fcntl(lifeline, F_SETFD, FD_CLOEXEC);
    ::sem_init(&thread_stopped, 0, 0);
    ::sem_init(&word_came, 0, 0);
    struct sigaction action = {};
    action.sa_handler = stop_here;
    ::sigaction(SIGRTMIN, &action, nullptr);
    std::thread([lifeline, collecting = ::pthread_self()] {
        for (;;) {
            char byte = 0;
            const auto size = ::read(lifeline, &byte, 1);
            if (size < 0 && errno == EINTR) continue;
            if (size <= 0) break;
            take_word(byte);
        }
        stop_thread(collecting);
        kill_descendants();
        ::_exit(1);
    }).detach();
}

// Nothing is started any more. Stopped in its own end, this thread could hold a lock that the other one needs to end
// the process.
void go_on_without_parent() {
    sigset_t stopping;
    ::sigemptyset(&stopping);
    ::sigaddset(&stopping, SIGRTMIN);
    ::pthread_sigmask(SIG_BLOCK, &stopping, nullptr);
}

// Waits until no other lane asks anything any more. What they have learned of the BMC holds here.
void wait_for_other_lanes() {
    if (next_word() == kLanesEndedDeviceLeft) ::setenv("QV_DEVICE_LEFT", "1", 1);
    ::unsetenv("QV_DIRECTORY_SHARED");
}

template <class Call>
std::string thrown_by(Call call) {
    try {
        call();
        return "";
    } catch (const std::exception& error) {
        return *error.what() ? error.what() : "an exception without words";
    } catch (...) {
        return "an exception of an unknown kind";
    }
}

void collect_table(RModule& module, const std::string& table, RRepository& repository,
                   const JournalSink& sink, JournalWriter& journal) {
    const auto& callbacks = module.callbacks.at(table);
    journal.append(TableStartEntry{module.GetName(), table});
    RInstancesWrapper::Impl layout;
    RInstancesWrapper wrapper(layout);
    auto error = thrown_by([&] { callbacks.enumerate(repository); });
    const auto wrap_error = thrown_by([&] { callbacks.wrap(wrapper); });
    if (error.empty()) error = wrap_error;
    if (error.empty()) error = sink.why_cut(table);
    journal.append(TableEndEntry{module.GetName(), table, layout.layout, error});
}

void call_also(const Plugin& plugin, const std::string& name, RRepository& repository) {
    for (const auto& operation : kOperations) {
        if (name != operation.name) continue;
        void* const address = plugin.operation(operation.symbol);
        if (!address) throw std::runtime_error("the plug-in has no operation for --also " + name);
        // What they return is ignored: the log has it in words.
        if (operation.takes_repository) {
            reinterpret_cast<void (*)(RRepository&)>(address)(repository);
        } else {
            reinterpret_cast<int (*)()>(address)();
        }
    }
}

void log_taken_over(const Offer& offer, const std::vector<SelectedModule>& modules) {
    constexpr unsigned kProgress = 3;
    if (XModule::Log::GetMinLogLevel() < kProgress) return;
    std::string names;
    for (const auto& module : modules)
        names += (names.empty() ? "" : ", ") + offer[module.place].display;
    XModule::Log(kProgress, "refhost/qvhost", __LINE__).Stream()
        << "A further process could not be started, and this one asks all modules that are left: "
        << names;
}

// The modules that this lane asks. Lanes are parts of the selected modules in their order.
std::vector<SelectedModule> modules_of_lane(const CollectOptions& options, const Offer& offer) {
    auto selected = select_modules(offer, options);
    const auto& own = options.lane_modules;
    if (own.empty()) return selected;
    const auto is_own = [&](const SelectedModule& module) {
        return std::find(own.begin(), own.end(), offer[module.place].name) != own.end();
    };
    selected.erase(selected.begin(), std::find_if(selected.begin(), selected.end(), is_own));
    if (next_word() == kModulesBehindToo) {
        log_taken_over(offer, selected);
        if (options.lane == 1) ::unsetenv("QV_DIRECTORY_SHARED");
    } else {
        selected.erase(std::find_if_not(selected.begin(), selected.end(), is_own), selected.end());
    }
    return selected;
}

using Clock = std::chrono::steady_clock;

// What the modules of the plug-in say. Why it is incomplete; empty: it is complete.
std::string ask_modules(const CollectOptions& options, Clock::time_point end,
                        JournalWriter& journal) {
    const auto limits = limits_for(options);
    const Plugin plugin(options.plugin);
    const auto offer = offer_of(plugin);
    const auto selected = modules_of_lane(options, offer);
    JournalSink sink(journal, limits.table_bytes);
    RRepository repository(sink);
    // All modules first, so that a collection that is cut off can say what it did not reach.
    for (const auto& [place, tables] : selected)
        journal.append(ModuleEntry{offer[place].name, offer[place].display, tables});
    for (const auto& [place, tables] : selected) {
        set_tool_deadline(
            std::min(end, Clock::now() + std::chrono::seconds(limits.module_seconds)));
        runner::log_mark(std::string(kModuleMark) + offer[place].name);
        for (const auto& table : tables) {
            collect_table(*plugin.modules()[place], table, repository, sink, journal);
            // The disk is full: what the tools would say from here on could not be kept.
            if (!sink.failure().empty()) throw std::runtime_error(sink.failure());
        }
    }

    std::vector<std::string> errors;
    for (const auto& name : options.also) {
        runner::log_mark(std::string(kAlsoMark) + name);
        errors.push_back(thrown_by([&] { call_also(plugin, name, repository); }));
    }
    errors.push_back(sink.failure());
    if (!log_failure().empty()) errors.push_back("the log could not be written: " + log_failure());

    std::string text;
    for (const auto& error : errors) {
        if (!error.empty()) text += (text.empty() ? "" : "; ") + error;
    }
    return text;
}

std::set<std::string> names_in(const std::filesystem::path& directory) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        names.insert(entry.path().filename().string());
    return names;
}

void ask_own_questions(const CollectOptions& options, const LogDir& dir,
                       std::set<std::string> foreign, JournalWriter& journal) {
    const char* search_path = std::getenv("PATH");
    ask::Settings settings;
    settings.log_dir = dir.path();
    settings.places.vendor_tools = program_file().parent_path() / "qv_tools";
    settings.places.search_path = search_path ? search_path : "";
    settings.places.why_not_trusted = why_not_trusted;
    settings.for_verdicts_alone = options.profile == kHealthProfile;
    settings.run = [](const std::string& command) { return runner::run(command); };
    settings.begin = [&](const std::string& tool) { journal.append(QuestionEntry{tool, "", ""}); };
    settings.lacks = [&](const ask::Lack& lack) {
        journal.append(QuestionEntry{"", lack.subsystem, lack.words});
    };
    if (options.replayed) {
        settings.recorded.emplace();
        for (const auto& text : options.recorded) {
            const auto tab = text.find('\t');
            auto arguments =
                tab == std::string::npos ? std::nullopt : std::optional(text.substr(tab + 1));
            settings.recorded->push_back({text.substr(0, tab), std::move(arguments)});
        }
    }
    for (const auto& command : read_commands(dir).commands) {
        const auto end = outcome(command);
        const bool ended_well = end.empty() || inventory::ran_to_its_end(command.text, end);
        settings.earlier.push_back({command.text, ended_well, !command.stopped_by.empty()});
        for (const auto& capture : command.captures) foreign.erase(capture);
    }
    settings.foreign = std::move(foreign);
    runner::log_mark(std::string(kHostMark));
    ask::ask(settings);
}

// The layer keeps the IPMI driver until the host's own questions are asked: the plug-in would stop it after its own. The
// last lane stops it.
class KeptDriver {
public:
    explicit KeptDriver(bool is_only_lane) : is_only_lane_(is_only_lane) {
        compat::keep_driver(notes_);
    }
    void other_lanes_ended() { is_only_lane_ = true; }
    ~KeptDriver() {
        if (!is_only_lane_) return;
        if (compat::release_driver(notes_)) runner::run("service ipmi stop 1>/dev/null 2>&1");
    }
    KeptDriver(const KeptDriver&) = delete;
    KeptDriver& operator=(const KeptDriver&) = delete;

private:
    bool is_only_lane_;
    std::filesystem::path notes_ = notes_of(program_file());
};

// Why the collection is incomplete; empty: it is complete.
std::string collect(const CollectOptions& options, const LogDir& dir, JournalWriter& journal) {
    const auto limits = limits_for(options);
    const auto end = Clock::now() + std::chrono::seconds(limits.run_seconds);
    auto foreign = names_in(dir.path());
    std::string error;
    std::optional<KeptDriver> driver;
    if (asks_own_questions(options)) driver.emplace(options.lane_modules.empty());
    if (options.profile != kHealthProfile) error = ask_modules(options, end, journal);
    journal.append(ModulesEndEntry{std::getenv("QV_DEVICE_LEFT") != nullptr});
    if (asks_own_questions(options) && options.lane == 1) {
        wait_for_other_lanes();
        driver->other_lanes_ended();
        set_tool_deadline(
            std::min(end, Clock::now() + std::chrono::seconds(limits.module_seconds)));
        ask_own_questions(options, dir, std::move(foreign), journal);
    }
    return error;
}

}  // namespace

int run_child(int settings, int lifeline) {
    // In a process group of its own, so that Ctrl-C on a terminal reaches the parent alone.
    ::setpgid(0, 0);
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    ::signal(SIGPIPE, SIG_DFL);

    const auto options = options_from(read_settings(Descriptor(settings)));
    const LogDir dir(options.log_dir);
    JournalWriter journal(dir.journal(options.lane));
    std::string error;
    try {
        sync_names(dir.report());  // half a store without a journal could be taken for a whole one
        end_with_parent(lifeline);
        redirect_standard_streams(dir.console(options.lane));
        set_tool_environment(options.search_path, limits_for(options),
                             free_bytes_for(options, options.log_dir), tool_limits_text(options),
                             dir.commands(options.lane));
        ::unsetenv("QV_DIRECTORY_SHARED");
        if (!options.lane_modules.empty()) ::setenv("QV_DIRECTORY_SHARED", "1", 1);
        const auto log = dir.log(options.lane).string();
        ::setenv(compat::kLogVariable, log.c_str(), 1);
        std::filesystem::current_path(options.log_dir);  // some tools leave files where they are
        open_log({.log_dir = (options.log_dir / "").string(),
                  .log_file = log,
                  .min_level = options.log_level});
        error = collect(options, dir, journal);
    } catch (const std::exception& problem) {
        error = problem.what();
    }
    journal.append(EndEntry{error});
    go_on_without_parent();
    return error.empty() ? 0 : 1;
}

}  // namespace qvhost
