#include "runner/command_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace runner {

namespace {

// Each line is one write(), so that lines of several processes do not mix. If the log cannot be
// written, the collection goes on.
void append(const std::string& line) {
    const char* path = std::getenv("QV_COMMAND_LOG");
    if (!path) return;
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) return;
    [[maybe_unused]] const ssize_t written = ::write(fd, line.data(), line.size());
    ::close(fd);
}

std::string one_line(const std::string& text) {
    std::string line;
    for (const char c : text) {
        if (c == '\\') {
            line += "\\\\";
        } else if (c == '\n') {
            line += "\\n";
        } else {
            line += c;
        }
    }
    return line;
}

}  // namespace

LoggedCommand::LoggedCommand(const std::string& command) {
    append("> " + one_line(command) + '\n');
}

void LoggedCommand::ended(int status, const char* reason, const std::vector<pid_t>& left) const {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start_;
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "< %.3f %d", took.count(), status);
    std::string line = numbers;
    if (reason || !left.empty()) line += std::string(" ") + (reason ? reason : "ended");
    for (const pid_t pid : left) line += " " + std::to_string(pid);
    append(line + '\n');
}

void log_unread(const std::string& path, int error) {
    append("! " + std::to_string(error) + " " + one_line(path) + '\n');
}

void log_unread(int fd, int error) {
    std::error_code unknown;
    const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), unknown);
    log_unread(path.string(), error);
}

}  // namespace runner
