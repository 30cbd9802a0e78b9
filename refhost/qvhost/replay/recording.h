// A recorded server that is being made: what machine.json (machine.h) will say, and where the bytes of its files come
// from.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "files/descriptor.h"
#include "qvhost/base/machine_identity.h"

namespace qvhost {

// Seconds, the longest that a recorded server can say: of a tool that was stopped.
inline constexpr unsigned kNeverEnds = 86400;

// Bytes of a recorded server's file.
struct Content {
    std::string name;                 // in `root`, and as a proposal for the file's own
    std::filesystem::path root = {};  // a directory; empty: the bytes are here
    std::string bytes = {};
};

struct RecordingCommand {
    std::string tool;
    std::optional<std::string> arguments;  // nothing: any
    std::optional<Content> out = {};
    std::optional<Content> err = {};
    int exit = 0;
    int signal = 0;
    unsigned seconds = 0;
    std::map<std::string, Content> files = {};  // by their names in the current directory
};

struct Recording {
    std::string description;
    std::string uname;
    std::string recorded;
    MachineIdentity identity;
    std::vector<std::pair<std::string, std::string>> lacks = {};  // subsystem, words
    std::vector<RecordingCommand> commands = {};
    std::vector<std::pair<std::string, std::string>> asked = {};  // by the host: tool, arguments
    std::vector<std::string> not_known = {};  // what the recorded server does not hold, for people
};

// Opens a regular file of that name below the directory, through no link. Returns no descriptor if there is none.
Descriptor open_below(const std::filesystem::path& directory, const std::filesystem::path& name);

// The names of the regular files that `name` is or holds, below the directory; links are not followed.
std::vector<std::string> files_below(const std::filesystem::path& directory,
                                     const std::string& name);

// Writes machine.json and its files into the directory, which is empty. What cannot be held or read is told in
// `not_known`. Throws std::system_error naming what could not be written.
void write_recording(Recording& recording, const std::filesystem::path& directory);

}  // namespace qvhost
