// Time limits of commands, from the environment (whole seconds; unset or not a positive number: none):
//     QV_TOOL_TIMEOUT     how long a command may take
//     QV_ARCHIVE_TIMEOUT  the same, where set, for tools that pack a whole system's logs
//     QV_SILENCE_TIMEOUT  how long a command may go without writing a byte anywhere
//     QV_DEADLINE         when every command ends and none begins, on the clock CLOCK_MONOTONIC
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>

namespace marlox::repository::capture {

enum class Patience {
    tool,     // QV_TOOL_TIMEOUT
    archive,  // QV_ARCHIVE_TIMEOUT
};

// Why a command was stopped, as the command log has it.
inline constexpr const char* kOutOfTime = "time";
inline constexpr const char* kSilent = "silence";
inline constexpr const char* kDeadline = "deadline";

// The limits of one command, from its start.
class Limits {
public:
    explicit Limits(Patience patience);

    bool any() const { return time_ || deadline_ || silence_; }

    // Why the command must end now, or must not begin; null: it need not. `group` is its process
    // group; 0: it has not begun.
    const char* exceeded(pid_t group);

    // How long to wait before asking again, as poll() takes it: milliseconds, -1: for ever.
    int interval() const;

private:
    using Clock = std::chrono::steady_clock;  // CLOCK_MONOTONIC

    bool is_silent(pid_t group);

    std::optional<Clock::time_point> time_;
    std::optional<Clock::time_point> deadline_;
    std::optional<std::chrono::seconds> silence_;
    Clock::time_point heard_ = Clock::now();
    std::uint64_t written_ = 0;
};

}  // namespace marlox::repository::capture
