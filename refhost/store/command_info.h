// A command of the collection, as the store keeps it, and the words for people that are made from it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qvhost {

struct CommandInfo {
    std::string text;
    int lane = 1;                             // commands of one lane ran one after another
    std::string origin = "plug-in";           // or "host"
    std::string tool = {};                    // without its directory
    std::optional<std::string> started = {};  // UTC; nothing: it was not. Empty: nobody noted when
    std::optional<double> seconds = {};       // nothing: it had not ended when the collection did
    std::optional<int> exit = {};
    std::optional<int> signal = {};
    // The limit or person that stopped it: "time", "silence", "run", "user", "size". Empty: none.
    std::string stopped_by = {};
    std::vector<std::string> captures =
        {};  // the files that it wrote, by their names in the log directory
    std::string standard_error = {};  // its first 4 KiB
    // What else is known of its end, in words: processes that were left, a capture that cannot be read.
    std::string remark = {};
    bool operator==(const CommandInfo&) const = default;
};

// How it ended, for people; empty: all went well.
std::string outcome(const CommandInfo& command);

// Whether it ended before it had printed everything, or was not even started.
bool was_cut_off(const CommandInfo& command);

// The command as an older store tells it: with its outcome in words.
CommandInfo command_of_words(const std::string& text, double seconds, const std::string& outcome,
                             bool cut_off);

// Whether the command line has the file as a word of its own.
bool names(const CommandInfo& command, const std::string& file);

// Whether the shell writes the command's output into the file (">FILE", "2> 'FILE'").
bool writes(const CommandInfo& command, const std::string& file);

}  // namespace qvhost
