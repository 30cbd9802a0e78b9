#include "runner/command_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace runner {

namespace {

// What belongs together is one write(), so that lines of several processes do not mix. If the log cannot be
// written, the collection goes on.
void append(const std::string& line) {
    const char* path = std::getenv("QV_COMMAND_LOG");
    if (!path) return;
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) return;
    [[maybe_unused]] const ssize_t written = ::write(fd, line.data(), line.size());
    ::close(fd);
}

std::string one_line(std::string_view text) {
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

// "2026-11-21T01:20:40.123Z"
std::string utc_now() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::tm parts{};
    ::gmtime_r(&now.tv_sec, &parts);
    char text[32];
    const auto size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text + size, sizeof text - size, ".%03ldZ", now.tv_nsec / 1'000'000);
    return text;
}

}  // namespace

bool is_logging() { return std::getenv("QV_COMMAND_LOG") != nullptr; }

LoggedCommand::LoggedCommand(const std::string& command, std::optional<std::chrono::seconds> limit,
                             bool asked_by_runner) {
    append((asked_by_runner ? "? " : "> ") + utc_now() + ' ' + one_line(command) + '\n' +
           (limit ? "~ " + std::to_string(limit->count()) + '\n' : ""));
}

void LoggedCommand::wrote(const std::vector<std::string>& files) const {
    for (const auto& file : files) append("+ " + one_line(file) + '\n');
}

void LoggedCommand::said(std::string_view standard_error) const {
    if (!standard_error.empty()) append("2 " + one_line(standard_error) + '\n');
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

void log_not_started(const std::string& command, const char* reason) {
    append("- " + std::string(reason) + ' ' + one_line(command) + '\n');
}

void log_mark(const std::string& text) { append("= " + one_line(text) + '\n'); }

void log_unread(const std::string& path, int error) {
    append("! " + std::to_string(error) + " " + one_line(path) + '\n');
}

void log_unread(int fd, int error) {
    std::error_code unknown;
    const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), unknown);
    log_unread(path.string(), error);
}

}  // namespace runner
