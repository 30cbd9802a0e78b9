#include "qvhost/launch.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "qvhost/child.h"
#include "qvhost/plugin.h"

namespace qvhost {

namespace {

// What changes the output of the tools, or the tools themselves.
constexpr auto kForeignVariables = std::to_array<std::string_view>({
    "PATH",
    "LANG",
    "LANGUAGE",
    "LC_",             // every category
    "POSIXLY_CORRECT",
    "GREP_",           // GREP_OPTIONS, GREP_COLORS
    "COLUMNS",
    "LINES",
    "CDPATH",
    "BASH_FUNC_",      // functions that stand in for commands where sh is bash
    "QV_TOOL_TIMEOUT",
    "QV_ARCHIVE_TIMEOUT",
});

std::vector<std::string> tool_environment(const Launch& launch, const CollectOptions& options) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable; ++variable) {
        const std::string_view text = *variable;
        const bool foreign =
            std::any_of(kForeignVariables.begin(), kForeignVariables.end(),
                        [&](std::string_view name) {
                            return text.starts_with(name) &&
                                   (name.ends_with('_') || text.substr(name.size()).starts_with('='));
                        });
        if (!foreign) variables.emplace_back(text);
    }
    variables.push_back("PATH=" + launch.search_path);
    variables.emplace_back("LC_ALL=C.UTF-8");
    variables.push_back("QV_TOOL_TIMEOUT=" + std::to_string(options.tool_timeout));
    variables.push_back("QV_ARCHIVE_TIMEOUT=" + std::to_string(6 * options.tool_timeout));
    return variables;
}

std::vector<std::string> child_arguments(const Launch& launch, const CollectOptions& options,
                                         const LogDir& dir) {
    std::vector<std::string> arguments{launch.program, "collect-child", "--log-dir=" + dir.path,
                                       "--log-level=" + std::to_string(options.log_level),
                                       "--plugin=" + plugin_file(options.plugin)};
    for (const auto& module : options.modules) arguments.push_back("--module=" + module);
    for (const auto& table : options.tables) arguments.push_back("--table=" + table);
    return arguments;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    for (auto& text : texts) all.push_back(text.data());
    all.push_back(nullptr);
    return all;
}

bool move_to(int fd, int place) {
    if (fd == place) return ::fcntl(fd, F_SETFD, 0) == 0;
    return ::dup2(fd, place) == place;
}

// In the new process, until it is the other program. Only system calls: what fails is told by errno.
bool settle(const LogDir& dir, pid_t parent, int complaints) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        errno = ESRCH;
        return false;
    }
    ::setsid();
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGPIPE, SIGINT, SIGQUIT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);

    const int input = ::open("/dev/null", O_RDONLY);
    const int output = ::open(dir.console().c_str(),
                              O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW, 0600);
    return input >= 0 && output >= 0 && move_to(complaints, kComplaintFd + 1) &&
           move_to(input, 0) && move_to(output, 1) && ::dup2(1, 2) == 2 &&
           move_to(kComplaintFd + 1, kComplaintFd) && ::close_range(kComplaintFd + 1, ~0u, 0) == 0 &&
           ::chdir(dir.path.c_str()) == 0;
}

}  // namespace

Launch launch_here() {
    const char* users = std::getenv("PATH");
    std::string_view rest = users ? users : "";
    std::vector<std::string> places;
    while (!rest.empty()) {
        const auto end = std::min(rest.find(':'), rest.size());
        if (rest.starts_with('/')) places.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    for (const char* place : {"/usr/sbin", "/sbin", "/usr/bin", "/bin"}) {
        if (std::find(places.begin(), places.end(), place) == places.end())
            places.emplace_back(place);
    }
    Launch launch{own_program(), ""};
    for (const auto& place : places)
        launch.search_path += (launch.search_path.empty() ? "" : ":") + place;
    return launch;
}

Child start_child(const Launch& launch, const CollectOptions& options, const LogDir& dir) {
    auto arguments = child_arguments(launch, options, dir);
    auto variables = tool_environment(launch, options);
    const auto argument_pointers = pointers(arguments);
    const auto variable_pointers = pointers(variables);

    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("cannot make a pipe: ") + std::strerror(errno));
    const auto [reading, writing] = ends;
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0) {
        if (settle(dir, parent, writing))
            ::execve(launch.program.c_str(), argument_pointers.data(), variable_pointers.data());
        const char* reason = ::strerror(errno);
        for (const char* part : {"cannot start ", launch.program.c_str(), ": ", reason, "\n"}) {
            // The complaint is at either place, depending on how far it came.
            if (::write(kComplaintFd, part, std::strlen(part)) < 0 &&
                ::write(writing, part, std::strlen(part)) < 0)
                break;
        }
        ::_exit(127);
    }
    ::close(writing);
    if (pid < 0) {
        ::close(reading);
        throw std::runtime_error(std::string("cannot start a process: ") + std::strerror(errno));
    }
    return {pid, reading};
}

}  // namespace qvhost
