// The one place that starts processes. Commands run in `/bin/sh -c`, as system() and popen() run
// them, but no descriptor of the host beyond 0, 1 and 2 reaches a tool, and a tool can have a time
// limit.
//
// The limit is the environment variable QV_TOOL_TIMEOUT (whole seconds; unset or not a positive
// number: none). A command that outlives it is killed with its process group; its status is then
// that of a command killed by signal 9.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace marlox::repository::capture {

enum class Patience {
    tool,     // QV_TOOL_TIMEOUT
    archive,  // QV_ARCHIVE_TIMEOUT where that is set, for tools that pack a whole system's logs
};

// Runs the command and returns its wait status; -1 if no process could be started. SIGINT and
// SIGQUIT are ignored and SIGCHLD is blocked until the command has ended.
int run(const std::string& command, Patience patience = Patience::tool);

// The first bytes that the command prints on its standard output; nothing if the command could not
// be started. Output beyond `most` bytes is not waited for.
std::optional<std::string> output_of(const std::string& command, std::size_t most = 4096);

}  // namespace marlox::repository::capture
