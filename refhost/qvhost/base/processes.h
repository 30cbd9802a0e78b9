#pragma once

#include <sys/types.h>

#include <vector>

namespace qvhost {

// The processes that descend from this one now, children of children included.
std::vector<pid_t> descendants();

// Kills them, and those they start meanwhile, and waits until they are gone. This process must adopt
// orphans (PR_SET_CHILD_SUBREAPER). Returns those that could not be killed within two seconds: they
// hang inside the kernel.
std::vector<pid_t> kill_descendants();

}  // namespace qvhost
