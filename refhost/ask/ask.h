// Asks the host's own questions (questions.h), one after the other, after a plug-in's modules. Each command
// goes through the runner, with its limits and its log, and leaves a capture in the log directory.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ask/tools.h"

namespace qvhost::ask {

// A command that a recorded server holds.
struct Recorded {
    std::string tool;
    std::optional<std::string> arguments;  // nothing: any
    bool operator==(const Recorded&) const = default;
};

// Something that a verdict needed and that could not be asked.
struct Lack {
    std::string subsystem;
    std::string words;  // "smartctl is not installed (Debian package smartmontools)"
    bool operator==(const Lack&) const = default;
};

// A command that a plug-in has run.
struct Earlier {
    std::string command;
    bool ended_well = true;
    bool stopped = false;  // at a limit
};

struct Settings {
    std::filesystem::path log_dir;
    std::set<std::string> foreign = {};  // files in it that this collection has not written
    ToolPlaces places;
    bool for_verdicts_alone = false;  // --profile health
    // In a replay what the server has recorded: nothing else is asked, and nothing of this machine is
    // looked at.
    std::optional<std::vector<Recorded>> recorded = {};
    std::vector<Earlier> earlier = {};         // what a plug-in has run
    std::filesystem::path machine_root = "/";  // where the machine's files are

    std::function<int(const std::string& command)> run;  // the runner; returns the wait status
    std::function<void(const std::string& tool)> begin;  // a command of this tool is about to start
    std::function<void(const Lack&)> lacks;
};

void ask(const Settings& settings);

}  // namespace qvhost::ask
