// The one place that starts processes. Commands run in `/bin/sh -c`, as system() and popen() run
// them, but no descriptor of the host beyond 0, 1 and 2 reaches a tool, and a tool can have a time
// limit.
//
// The limits come from the environment (limits.h). A command that exceeds one is killed with its
// process group; its wait status is then that of a command killed by signal 9.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "runner/limits.h"

namespace runner {

// Runs the command and returns its wait status; -1 if no process could be started. SIGINT and
// SIGQUIT are ignored and SIGCHLD is blocked until the command has ended.
int run(const std::string& command, TimeoutKind kind = TimeoutKind::tool);

// What the command prints on its standard output, at most `most` bytes, read until a line that is not
// blank has ended; nothing if the command could not be started. As after popen(), fgets() and
// pclose(), the pipe is then closed and the shell waited for, but no process that it leaves behind.
std::optional<std::string> output_of(const std::string& command, std::size_t most = 4096);

}  // namespace runner
