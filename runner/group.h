// The processes of a command.
//
// In any host these are the members of its process group, and only a command that exceeds a limit is killed.
// A host that adopts orphans (PR_SET_CHILD_SUBREAPER) and has no other children may set QV_END_PROCESSES=1:
// then they are all processes that descend from the host and were not there before the command, whatever group
// or session they went to, and those that are left at its end are killed. One command runs at a time.
#pragma once

#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace runner {

class CommandProcesses {
public:
    // Before the command starts.
    CommandProcesses();
    // It has started with this process group.
    void started(pid_t group) { group_ = group; }

    // Those that have not ended. Empty, too, if /proc cannot be read.
    std::vector<pid_t> members() const;

    void kill() const;

    // Whether some may be left at the command's end that are to be killed.
    bool end_with_command() const;

    // Waits for those that the host has adopted and that have ended, but not for the command itself.
    void reap_adopted() const;

private:
    pid_t group_ = 0;
    bool whole_tree_;
    std::set<pid_t> before_;  // descendants of the host
};

// Whether the command starts a service on purpose, which stays: "service NAME start".
bool starts_service(const std::string& command);

}  // namespace runner
