// A recorded server: a directory with machine.json and the captures it names.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "qvhost/base/machine_identity.h"

namespace qvhost {

// A command that the server ran, and what it did.
struct RecordedCommand {
    std::string tool;                      // without directory and build
    std::optional<std::string> arguments;  // joined by blanks; nothing: any
    std::filesystem::path stdout_file;     // absolute; empty: nothing was printed
    std::filesystem::path stderr_file;
    std::string stderr_text;  // where there is no file
    int exit_code = 0;
    int signal = 0;                                      // that killed it; 0: none
    unsigned seconds = 0;                                // it took
    std::map<std::string, std::filesystem::path> files;  // written in the current directory
};

struct Machine {
    std::string description;
    std::string uname;  // the hardware platform
    // When it was recorded, by its own clock: "2026-11-20T07:30:05". Empty: nobody noted it.
    std::string recorded;
    MachineIdentity identity;
    // What verdicts needed and could not be asked there: subsystem, words.
    std::vector<std::pair<std::string, std::string>> lacks;
    std::vector<RecordedCommand> commands;
    // Which commands the host asked by itself: tool, arguments. Nothing: it may ask all.
    std::optional<std::vector<std::pair<std::string, std::string>>> asked;
};

// Throws std::runtime_error naming the file and what is wrong with it.
Machine read_machine(const std::filesystem::path& directory);

}  // namespace qvhost
