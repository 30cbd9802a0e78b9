#include "qvhost/present/pager.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ext/stdio_filebuf.h>
#include <iostream>
#include <string>
#include <system_error>

namespace qvhost {

namespace {

// What the shell says of a command that it cannot run, or cannot find.
constexpr int kCannotRun = 126;
constexpr int kNotFound = 127;

std::string pager_command() {
    const char* const variable = std::getenv("PAGER");
    const std::string command = variable ? variable : "less";
    return command == "cat" ? "" : command;
}

// Signals of the terminal are the pager's business, as long as it runs, and its end is an error of
// writing. The pager itself gets them as we did.
class PagerSignals {
public:
    PagerSignals() {
        sigemptyset(&defaults_);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            before_[i] = std::signal(kSignals[i], SIG_IGN);
            if (before_[i] != SIG_IGN || kSignals[i] == SIGPIPE) sigaddset(&defaults_, kSignals[i]);
        }
    }
    ~PagerSignals() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) std::signal(kSignals[i], before_[i]);
    }
    PagerSignals(const PagerSignals&) = delete;
    PagerSignals& operator=(const PagerSignals&) = delete;

    const sigset_t& defaults() const { return defaults_; }

private:
    static constexpr std::array kSignals{SIGINT, SIGQUIT, SIGPIPE};
    std::array<void (*)(int), kSignals.size()> before_{};
    sigset_t defaults_{};
};

pid_t start(const std::string& command, int input, const sigset_t& defaults) {
    // Leave if it fits on one screen, colours as they are, no clearing of the screen.
    ::setenv("LESS", "FRX", 0);
    std::string texts[] = {"sh", "-c", command};
    char* const arguments[] = {texts[0].data(), texts[1].data(), texts[2].data(), nullptr};

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, "/bin/sh", &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

// Whether the pager could be run.
bool print_through(const std::string& command, const std::function<void(std::ostream&)>& print) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    __gnu_cxx::stdio_filebuf<char> buffer(ends[1], std::ios::out);
    const PagerSignals signals;
    const pid_t pager = start(command, ends[0], signals.defaults());
    ::close(ends[0]);
    if (pager < 0) return false;

    int status = 0;
    const auto wait = [&] {
        buffer.close();
        while (::waitpid(pager, &status, 0) < 0 && errno == EINTR) {
        }
    };
    try {
        std::ostream out(&buffer);
        out.exceptions(std::ios::badbit);
        print(out);
        out.flush();
    } catch (const std::ios_base::failure&) {
        // Who quits the pager has seen enough.
    } catch (...) {
        wait();
        throw;
    }
    wait();
    return !WIFEXITED(status) ||
           (WEXITSTATUS(status) != kCannotRun && WEXITSTATUS(status) != kNotFound);
}

}  // namespace

void print_paged(bool wanted, const std::function<void(std::ostream&)>& print) {
    const auto command = wanted && ::isatty(STDOUT_FILENO) == 1 ? pager_command() : "";
    if (command.empty() || !print_through(command, print)) print(std::cout);
}

}  // namespace qvhost
