// Which processes belong to a process group.
#pragma once

#include <sys/types.h>

#include <vector>

namespace runner {

// The processes of the group that have not ended. Empty, too, if /proc cannot be read.
std::vector<pid_t> members(pid_t group);

}  // namespace runner
