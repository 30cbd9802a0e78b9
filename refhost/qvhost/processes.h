// The processes of a collection, found in /proc, and their end.
#pragma once

#include <sys/types.h>

#include <functional>
#include <vector>

namespace qvhost {

struct Process {
    pid_t pid = 0;
    pid_t parent = 0;
    pid_t session = 0;
    char state = '?';
};

std::vector<Process> processes();

// Those of `all` that `root` started, and that these started; not `root` itself.
std::vector<Process> descendants(pid_t root, const std::vector<Process>& all);

// Kills what `find` finds, again and again until it finds nothing that is alive, and reaps what of
// it is this process's own. What is still there after five seconds hangs inside the kernel and is
// returned.
std::vector<Process> kill_all(const std::function<std::vector<Process>()>& find);

}  // namespace qvhost
