#pragma once

#include <sys/types.h>

#include <vector>

namespace marlox::repository::capture {

// The processes of the group that have not ended; none as well if the system does not tell.
std::vector<pid_t> members(pid_t group);

}  // namespace marlox::repository::capture
