#include "processes/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "files/descriptor.h"

namespace qvhost {

namespace {

pid_t number(std::string_view text) {
    pid_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// proc(5), /proc/PID/stat: "PID (NAME) STATE PPID ...", where the name may hold anything.
pid_t parent_of(pid_t pid) {
    const auto path = "/proc/" + std::to_string(pid) + "/stat";
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) return 0;
    const auto stat = read_bytes(file.get(), 512);
    const auto name_end = stat.rfind(')');
    constexpr std::size_t kStateAndBlanks = 4;
    if (name_end == std::string_view::npos || name_end + kStateAndBlanks > stat.size()) return 0;
    return number(std::string_view(stat).substr(name_end + kStateAndBlanks));
}

}  // namespace

pid_t start_process(const Start& start) {
    std::vector<std::string> texts{start.program};
    texts.insert(texts.end(), start.arguments.begin(), start.arguments.end());
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const auto& [ours, its] : start.descriptors)
        posix_spawn_file_actions_adddup2(&actions, ours, its);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    short flags = 0;
    if (start.blocked) {
        posix_spawnattr_setsigmask(&attributes, &*start.blocked);
        flags |= POSIX_SPAWN_SETSIGMASK;
    }
    if (start.defaults) {
        posix_spawnattr_setsigdefault(&attributes, &*start.defaults);
        flags |= POSIX_SPAWN_SETSIGDEF;
    }
    posix_spawnattr_setflags(&attributes, flags);
    pid_t process = -1;
    const int error = ::posix_spawn(&process, start.program.c_str(), &actions, &attributes,
                                    pointers.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "cannot start " + start.program);
    return process;
}

int wait_for_process(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

Answer answer_of_process(const std::function<std::string()>& call, unsigned seconds) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    const pid_t process = ::fork();
    if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::signal(SIGALRM, SIG_DFL);
        ::alarm(seconds);
        const Descriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(nothing.get(), stream);
        ::_exit(write_bytes(writing.get(), call()) ? 0 : 1);
    }
    writing = Descriptor();
    Answer answer;
    char block[4096];
    for (;;) {
        const auto size = ::read(reading.get(), block, sizeof block);
        if (size > 0) answer.text.append(block, static_cast<std::size_t>(size));
        if (size == 0 || (size < 0 && errno != EINTR)) break;
    }
    answer.status = wait_for_process(process);
    return answer;
}

std::vector<pid_t> descendants(const std::vector<pid_t>& without) {
    std::multimap<pid_t, pid_t> children;
    if (DIR* proc = ::opendir("/proc")) {
        while (const dirent* entry = ::readdir(proc)) {
            if (const pid_t pid = number(entry->d_name)) children.emplace(parent_of(pid), pid);
        }
        ::closedir(proc);
    }
    std::vector<pid_t> found{::getpid()};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto [begin, end] = children.equal_range(found[i]);
        for (auto child = begin; child != end; ++child) {
            if (std::find(without.begin(), without.end(), child->second) == without.end())
                found.push_back(child->second);
        }
    }
    found.erase(found.begin());
    return found;
}

std::vector<pid_t> kill_descendants(const std::vector<pid_t>& without) {
    using Clock = std::chrono::steady_clock;
    const auto give_up = Clock::now() + std::chrono::seconds(2);
    for (;;) {
        auto left = descendants(without);
        if (left.empty() || Clock::now() > give_up) return left;
        for (const pid_t pid : left) {
            if (::waitpid(pid, nullptr, WNOHANG) != pid) ::kill(pid, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

}  // namespace qvhost
