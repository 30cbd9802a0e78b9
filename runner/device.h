// A device that several tools ask and that may have stopped answering, so that not every one of them has
// to wait for its limit. The host names it in the environment:
//     QV_DEVICE_TOOLS     the tools that ask it, as their names begin: "ipmitool ipmiutil"
//     QV_DEVICE_QUESTION  a command that asks it for little: "ipmitool mc info"
// After two of these tools' commands in a row were stopped at their limits, the question is asked. If
// that is stopped as well or cannot be run, no further command of these tools is started. An answer is
// an answer, also if it is an error.
//     QV_DEVICE_LEFT      is set then, for all that run tools in this process
#pragma once

#include <optional>
#include <string>

namespace runner {

inline constexpr const char* kUnanswered = "unanswered";  // in the command log

// Whether the command would ask a device that was left.
bool is_left(const std::string& command);

// Notes how the command ended: its wait status, and why it was stopped, or null. One that could not be run tells nothing
// of the device. Returns the question that must be asked now.
std::optional<std::string> question_after(const std::string& command, int status,
                                          const char* reason);

// Notes the wait status of the question, and why it was stopped.
void note_answer(int status, const char* reason);

}  // namespace runner
