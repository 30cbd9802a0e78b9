#include "runner/device.h"

#include <sys/wait.h>

#include <cstdlib>
#include <sstream>
#include <string_view>

#include "runner/limits.h"
#include "runner/shell_words.h"

namespace runner {

namespace {

constexpr int kMostStops = 2;  // in a row

int stops = 0;

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool asks_device(const std::string& command) {
    const auto path = shell_word(command);
    const auto tool = path.substr(path.find_last_of('/') + 1);
    std::istringstream names(variable("QV_DEVICE_TOOLS"));
    for (std::string name; names >> name;) {
        if (tool.starts_with(name)) return true;
    }
    return false;
}

bool was_run(int status) {
    constexpr int kCannotRun = 126;
    constexpr int kNotFound = 127;
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    return status != -1 && code != kCannotRun && code != kNotFound;
}

}  // namespace

bool is_left(const std::string& command) {
    return !variable("QV_DEVICE_LEFT").empty() && asks_device(command);
}

std::optional<std::string> question_after(const std::string& command, int status,
                                          const char* reason) {
    if (!asks_device(command) || (!reason && !was_run(status))) return std::nullopt;
    const bool stopped =
        reason && (std::string_view(reason) == kTimedOut || std::string_view(reason) == kSilent);
    stops = stopped ? stops + 1 : 0;
    const auto question = variable("QV_DEVICE_QUESTION");
    if (stops < kMostStops || question.empty()) return std::nullopt;
    return question + " >/dev/null 2>&1";
}

void note_answer(int status, const char* reason) {
    if (!reason && was_run(status)) {
        stops = 0;
    } else {
        ::setenv("QV_DEVICE_LEFT", "1", 1);
    }
}

}  // namespace runner
