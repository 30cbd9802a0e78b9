// A log of the commands that were run: for hosts that want to know which command made a capture, how
// long it took, how it ended and what it said on standard error. The environment variable
// QV_COMMAND_LOG names the file (unset: no log); lines are appended to it. In texts "\" and line ends
// are written \\ and \n.
//     = TEXT              the host's mark: what the commands behind it belong to
//     > TIME COMMAND      the command is about to start; TIME is UTC and may be missing
//     ? TIME COMMAND      the same, of a command that the runner itself asks
//     - REASON COMMAND    the command is not started: its time is over before it began ("deadline"), what it
//                         would ask has not answered ("unanswered"), or a bound is reached ("run-size", "room")
// and of a command that was started:
//     ~ SECONDS           it may take so long; missing: as long as it wants
//     + FILE              it has written this file of the current directory
//     2 TEXT              how its standard error begins
//     < SECONDS STATUS [REASON [PID...]]
//                         it has ended: its wait status, -1 if it could not be started; why it was
//                         stopped ("time", "silence", "deadline", "size", "run-size", "room", "processes"; "ended" if it
//                         was not), and which processes could not be ended and were left behind
//     ! ERROR PATH        a capture could not be read, or not to its end; ERROR is the system's number
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

inline constexpr std::size_t kLoggedErrorBytes = 4096;  // of a command's standard error

// Whether there is a log.
bool is_logging();

// One command: the constructor logs its start, ended() its end.
class LoggedCommand {
public:
    // `limit` is how long it may take; nothing: as long as it wants.
    LoggedCommand(const std::string& command, std::optional<std::chrono::seconds> limit,
                  bool asked_by_runner);
    void wrote(const std::vector<std::string>& files) const;
    void said(std::string_view standard_error) const;
    void ended(int status, const char* reason = nullptr, const std::vector<pid_t>& left = {}) const;

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void log_not_started(const std::string& command, const char* reason);

// What the commands that follow belong to, in the host's words.
void log_mark(const std::string& text);

// `error` is an errno; `fd` is open on the capture.
void log_unread(const std::string& path, int error);
void log_unread(int fd, int error);

}  // namespace runner
