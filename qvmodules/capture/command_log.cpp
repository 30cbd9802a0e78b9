#include "capture/command_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace marlox::repository::capture {

namespace {

// One write() a line, so that lines stay whole whoever else appends. A log that cannot be written is
// no reason to collect less.
void append(const std::string& line) {
    const char* path = std::getenv("QV_COMMAND_LOG");
    if (!path) return;
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) return;
    [[maybe_unused]] const ssize_t written = ::write(fd, line.data(), line.size());
    ::close(fd);
}

}  // namespace

LoggedCommand::LoggedCommand(const std::string& command) {
    std::string line = "> ";
    for (const char c : command) {
        if (c == '\\') {
            line += "\\\\";
        } else if (c == '\n') {
            line += "\\n";
        } else {
            line += c;
        }
    }
    append(line + '\n');
}

void LoggedCommand::ended(int status, const char* reason, pid_t left) const {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start_;
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "< %.3f %d", took.count(), status);
    std::string line = numbers;
    if (reason) line += std::string(" ") + reason;
    if (left > 0) line += " " + std::to_string(left);
    append(line + '\n');
}

}  // namespace marlox::repository::capture
