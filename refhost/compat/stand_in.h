// Stand-ins that are more than a script: what they are given, and how they start and end as their tools.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost::compat {

struct StandInArguments {
    std::filesystem::path log;
    unsigned log_level = 3;
    std::vector<std::string> arguments;  // behind those, by the stand-in's script
};

int note_stand_in(const StandInArguments& given);
int ipmitool_stand_in(const StandInArguments& given);
int pack_stand_in(const StandInArguments& given);
int mv_stand_in(const StandInArguments& given);
int record_stand_in(const StandInArguments& given);

// Appends a line to the log, if its level lets progress through.
void note(const StandInArguments& given, const std::string& text);

// Replaces this process by the command, through the shell, which has the words for a tool that cannot be
// started. Returns 127 if there is no shell.
int start_instead(const std::vector<std::string>& command);

// Ends this process as a process of this wait status has ended, by its signal too, or returns its code.
int end_as(int wait_status);

}  // namespace qvhost::compat
