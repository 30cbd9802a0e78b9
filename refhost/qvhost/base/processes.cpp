#include "qvhost/base/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <thread>

namespace qvhost {

namespace {

pid_t number(std::string_view text) {
    pid_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// proc(5), /proc/PID/stat: "PID (NAME) STATE PPID ...", where the name may hold anything.
pid_t parent_of(pid_t pid) {
    char text[512];
    const auto path = "/proc/" + std::to_string(pid) + "/stat";
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return 0;
    const ssize_t size = ::read(fd, text, sizeof text);
    ::close(fd);
    if (size <= 0) return 0;
    const std::string_view stat(text, static_cast<std::size_t>(size));
    const auto name_end = stat.rfind(')');
    constexpr std::size_t kStateAndBlanks = 4;
    if (name_end == std::string_view::npos || name_end + kStateAndBlanks > stat.size()) return 0;
    return number(stat.substr(name_end + kStateAndBlanks));
}

}  // namespace

std::vector<pid_t> descendants() {
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
        for (auto child = begin; child != end; ++child) found.push_back(child->second);
    }
    found.erase(found.begin());
    return found;
}

std::vector<pid_t> kill_descendants() {
    using Clock = std::chrono::steady_clock;
    const auto patience = Clock::now() + std::chrono::seconds(2);
    for (;;) {
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        auto left = descendants();
        if (left.empty() || Clock::now() > patience) return left;
        for (const pid_t pid : left) ::kill(pid, SIGKILL);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

}  // namespace qvhost
