// A command of the collection, as the store keeps it.
#pragma once

#include <string>

namespace qvhost {

struct CommandInfo {
    std::string text;
    double seconds = 0;
    std::string outcome;   // for people; empty: all went well
    bool cut_off = false;  // whether it ended before it had printed everything
    bool operator==(const CommandInfo&) const = default;
};

// Whether the command line has the file as a word of its own.
bool names(const CommandInfo& command, const std::string& file);

// Whether the shell writes the command's output into the file (">FILE", "2> 'FILE'").
bool writes(const CommandInfo& command, const std::string& file);

}  // namespace qvhost
