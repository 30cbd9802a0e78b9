// The commands of a collection, as the log that the runner keeps (QV_COMMAND_LOG) tells them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "store/command_info.h"

namespace qvhost {

// Marks in the command log: what the commands behind them belong to.
inline constexpr std::string_view kModuleMark = "module ";  // and its name
inline constexpr std::string_view kAlsoMark = "also ";      // and the operation's name
inline constexpr std::string_view kHostMark = "host";       // the host's own questions

// So much of a collection's own logs is read at most: a file with holes costs who sends it nothing.
inline constexpr std::size_t kMostLogBytes = 8 << 20;

struct CommandLog {
    // In the order in which they were started; none if there is no log.
    std::vector<CommandInfo> commands;
    // Of each: the module, "also NAME", or empty if nobody told.
    std::vector<std::string> sections;
};

// What the log of one lane tells. `stopped_by` is what ended the lane ("user", "run"; empty: neither): it ended the
// command that was running then as well.
CommandLog read_commands(const std::filesystem::path& log, const std::filesystem::path& log_dir,
                         const std::string& stopped_by = {});

// The commands of all lanes, those of the plug-in in the lanes' order, then the host's own questions. The captures of
// a command are those that no command of another lane has written. `stopped_by` tells of each lane what ended it,
// from the first one on; what is missing is empty.
CommandLog read_commands(const LogDir& dir, const std::vector<std::string>& stopped_by = {});

// The command that a line of the log tells to begin; nothing: the line tells something else.
std::optional<CommandInfo> command_that_begins(const std::string& line);

// The command for people: the tool without its directory, no redirections. "storcli_x64 /c0 show"
std::string short_text(const CommandInfo& command);

// The short text of the command that is running now or was when the collection ended; empty: none.
std::string running_command(const std::filesystem::path& log);

// The files in the log directory that the shell writes for the command, by their names there.
std::vector<std::string> captures_of(const std::string& command,
                                     const std::filesystem::path& log_dir);

}  // namespace qvhost
