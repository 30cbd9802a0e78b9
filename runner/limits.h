// Limits of commands: bounds (bounds.h), and time limits from the environment (whole seconds; unset or not a positive number: none):
//     QV_TOOL_TIMEOUT     how long a command may take
//     QV_ARCHIVE_TIMEOUT  the same, where set, for tools that pack a whole system's logs
//     QV_TOOL_LIMITS      "ipmitool=900,storcli=60": instead of these two, for commands of these tools; a
//                         tool is meant with its builds (storcli_x64)
//     QV_SILENCE_TIMEOUT  how long a command may go without a sign of life: a byte that it writes anywhere, a
//                         millisecond of processor time, a process that begins or ends
//     QV_DEADLINE         when every command ends and none begins, on the clock CLOCK_MONOTONIC
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "runner/bounds.h"

namespace runner {

// A command that runs.
struct Running {
    const CommandProcesses& processes;
    const WrittenFiles& files;
};

// Which variable holds the time limit of a command.
enum class TimeoutKind {
    tool,      // QV_TOOL_TIMEOUT
    archive,   // QV_ARCHIVE_TIMEOUT
    question,  // QV_TOOL_TIMEOUT, at most fifteen seconds
};

// Why a command was stopped, in the words of the command log.
inline constexpr const char* kTimedOut = "time";
inline constexpr const char* kSilent = "silence";
inline constexpr const char* kDeadline = "deadline";

// The limits of one command, from its start.
class Limits {
public:
    explicit Limits(TimeoutKind kind, const std::string& command = "");

    bool any() const { return time_ || deadline_ || silence_ || bounds_.any(); }
    Bounds& bounds() { return bounds_; }
    const Bounds& bounds() const { return bounds_; }

    // Why the command must be stopped or not be started; null if it may go on. `running` is null before the
    // start.
    const char* exceeded(const Running* running);

    // How long a command may take that starts now; nothing: as long as it wants.
    std::optional<std::chrono::seconds> longest() const;

    // How long poll() may wait until exceeded() must be asked again: in milliseconds, -1 without end.
    int interval() const;

private:
    using Clock = std::chrono::steady_clock;  // CLOCK_MONOTONIC

    bool is_silent(const CommandProcesses& processes);

    Bounds bounds_;
    std::optional<std::chrono::seconds> limit_;
    std::optional<Clock::time_point> time_;
    std::optional<Clock::time_point> deadline_;
    std::optional<std::chrono::seconds> silence_;
    // What the processes had done at their last sign of life.
    struct Activity {
        std::uint64_t processes = 0;
        std::uint64_t bytes_written = 0;
        std::uint64_t processor_ns = 0;
    };
    static std::optional<Activity> activity_of(const CommandProcesses& processes);

    Clock::time_point last_sign_ = Clock::now();
    Activity last_activity_;
};

}  // namespace runner
