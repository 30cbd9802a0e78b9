// A log of the commands that were run: for hosts that want to know which command made a capture, how
// long it took and how it ended. The environment variable QV_COMMAND_LOG names the file (unset: no
// log); lines are appended to it:
//     > COMMAND           the command is about to start; "\" and line ends in it are written \\ and \n
//     < SECONDS STATUS [REASON [PID...]]
//                         it has ended: its wait status, -1 if it could not be started; why it was
//                         stopped ("time", "silence", "deadline"; "ended" if it was not), and which processes could not be
//                         ended and were left behind
//     ! ERROR PATH        a capture could not be read, or not to its end; ERROR is the system's number
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace runner {

// One command: the constructor logs its start, ended() its end.
class LoggedCommand {
public:
    explicit LoggedCommand(const std::string& command);
    void ended(int status, const char* reason = nullptr, const std::vector<pid_t>& left = {}) const;

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// `error` is an errno; `fd` is open on the capture.
void log_unread(const std::string& path, int error);
void log_unread(int fd, int error);

}  // namespace runner
