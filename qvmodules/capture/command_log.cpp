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

void LoggedCommand::ended(int status) const {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start_;
    char line[64];
    const int size = std::snprintf(line, sizeof line, "< %.3f %d\n", took.count(), status);
    append(std::string(line, static_cast<std::size_t>(size)));
}

}  // namespace marlox::repository::capture
