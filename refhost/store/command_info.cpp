#include "store/command_info.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "text/shell_error.h"

namespace qvhost {

namespace {

struct Stop {
    std::string_view stopped_by;
    std::string_view text;         // of a command that ran
    std::string_view not_started;  // of one that did not
};

// clang-format off
constexpr auto kStops = std::to_array<Stop>({
    {"time",    "stopped at its time limit",              "not asked: what it asks did not answer twice before"},
    {"silence", "stopped because it said no more",        "not asked: what it asks did not answer twice before"},
    {"run",     "stopped when the time was used up",      "not asked: the time was used up"                    },
    {"user",    "stopped when the collection was ended",  "not asked: the collection was ended"                },
    {"size",    "stopped at a limit of size or number",   "not asked: a limit of size was reached"             },
});
// clang-format on

constexpr std::string_view kNotStarted = "it could not be started";
constexpr std::string_view kNotEnded = "it was running when the collection ended";
constexpr std::string_view kExitCode = "exit code ";
constexpr std::string_view kSignal = "killed by signal ";

// A shell exits with 128 and the signal's number if a signal ended the tool.
std::optional<int> signal_told_by(int exit) {
    constexpr int kBase = 128;
    constexpr int kMostSignals = 64;
    if (exit > kBase && exit <= kBase + kMostSignals) return exit - kBase;
    return std::nullopt;
}

// Whether the shell did not find the tool. A tool that runs ends with the same code if something that it starts is
// missing; the shell complains on standard error, where that is known and goes nowhere else.
bool is_not_found(const CommandInfo& command) {
    const bool is_known = command.started != "" && command.text.find("2>") == std::string::npos;
    if (!is_known && command.standard_error.empty()) return true;
    std::string_view rest = command.standard_error;
    while (!rest.empty()) {
        const auto line = rest.substr(0, rest.find('\n'));
        const auto words = shells_words_on(command.tool, line);
        if (!words.empty() && words != "Permission denied") return true;
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    }
    return false;
}

std::string exit_text(const CommandInfo& command) {
    const int code = *command.exit;
    auto text = std::string(kExitCode) + std::to_string(code);
    if (const auto signal = signal_told_by(code))
        return text + ": " + std::string(kSignal) + std::to_string(*signal);
    if (code != kNotFound) return text;
    // The loader of a program ends with this code as well.
    const bool lacks_library =
        command.standard_error.find("error while loading shared libraries") != std::string::npos;
    if (lacks_library) return text + ": a library is missing";
    return is_not_found(command) ? text + ": not installed" : text;
}

std::string end_text(const CommandInfo& command) {
    for (const auto& stop : kStops) {
        if (stop.stopped_by == command.stopped_by)
            return std::string(command.started ? stop.text : stop.not_started);
    }
    if (!command.started) return std::string(kNotStarted);
    if (command.signal) return std::string(kSignal) + std::to_string(*command.signal);
    if (command.exit) return *command.exit == 0 ? "" : exit_text(command);
    return !command.seconds || command.remark.empty() ? std::string(kNotEnded) : "";
}

// "exit code 127: not installed" -> 127
std::optional<int> number_behind(std::string_view text, std::string_view words) {
    if (!text.starts_with(words)) return std::nullopt;
    int number = 0;
    const auto [end, error] =
        std::from_chars(text.data() + words.size(), text.data() + text.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

// Calls `is_so` with what stands before each place where the file is a word of its own, or a quoted one.
template <class Test>
bool any_place(const std::string& command, const std::string& file, Test is_so) {
    for (auto at = command.find(file); at != std::string::npos; at = command.find(file, at + 1)) {
        const auto end = at + file.size();
        const bool whole =
            end == command.size() ||
            std::string_view("' \t;&|)").find(command[end]) != std::string_view::npos;
        if (whole && is_so(std::string_view(command).substr(0, at))) return true;
    }
    return false;
}

}  // namespace

std::string outcome(const CommandInfo& command) {
    auto text = end_text(command);
    if (!command.remark.empty()) text += (text.empty() ? "" : "; ") + command.remark;
    return text;
}

bool was_cut_off(const CommandInfo& command) {
    return !command.started || !command.stopped_by.empty() || command.signal ||
           !command.remark.empty() || !command.exit || signal_told_by(*command.exit);
}

CommandInfo command_of_words(const std::string& text, double seconds, const std::string& outcome,
                             bool cut_off) {
    CommandInfo command{.text = text, .started = "", .seconds = seconds};
    for (const auto& stop : kStops) {
        if (!outcome.starts_with(stop.text)) continue;
        command.stopped_by = stop.stopped_by;
        if (outcome.size() > stop.text.size() + 2)
            command.remark = outcome.substr(stop.text.size() + 2);  // behind "; "
        return command;
    }
    command.exit = number_behind(outcome, kExitCode);
    command.signal = number_behind(outcome, kSignal);
    if (outcome == kNotStarted) {
        command.started.reset();
    } else if (outcome == kNotEnded) {
        command.seconds.reset();
    } else if (outcome.empty() && !cut_off) {
        command.exit = 0;
    } else if (!command.exit && !command.signal) {
        command.remark = outcome;
    }
    return command;
}

bool names(const CommandInfo& command, const std::string& file) {
    return any_place(command.text, file, [](std::string_view) { return true; });
}

bool writes(const CommandInfo& command, const std::string& file) {
    return any_place(command.text, file, [](std::string_view before) {
        const auto last = before.find_last_not_of("' \t");
        return last != std::string_view::npos && before[last] == '>';
    });
}

}  // namespace qvhost
