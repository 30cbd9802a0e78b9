#include "qvhost/present/pager.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <ext/stdio_filebuf.h>
#include <iostream>
#include <string>
#include <system_error>

#include "files/descriptor.h"
#include "processes/processes.h"
#include "text/shell_error.h"

namespace qvhost {

namespace {

std::string pager_command() {
    const char* const variable = std::getenv("PAGER");
    const std::string command = variable ? variable : "less";
    return command == "cat" ? "" : command;
}

// While the pager runs, this program ignores the signals of the terminal, which the pager handles, and
// sees the pager's end as an error of writing. The pager starts with the signals as this program had
// them.
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

// Whether the pager could be run.
bool print_through(const std::string& command, const std::function<void(std::ostream&)>& print) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    Descriptor input(ends[0]);
    __gnu_cxx::stdio_filebuf<char> buffer(ends[1], std::ios::out);
    const PagerSignals signals;
    // F: quit if it fits on one screen; R: print colours; X: do not clear the screen.
    ::setenv("LESS", "FRX", 0);
    pid_t pager = -1;
    try {
        pager = start_process({
            .program = "/bin/sh",
            .arguments = {"-c", command},
            .descriptors = {{input.get(), STDIN_FILENO}   },
            .defaults = signals.defaults()
        });
    } catch (const std::system_error&) {
        return false;
    }
    input.close();

    int status = 0;
    const auto wait = [&] {
        buffer.close();
        status = wait_for_process(pager);
    };
    try {
        std::ostream out(&buffer);
        out.exceptions(std::ios::badbit);
        print(out);
        out.flush();
    } catch (const std::ios_base::failure&) {
        // The user has quit the pager.
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
