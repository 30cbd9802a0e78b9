// Processes: how the host starts them, and how it ends all that descend from it.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qvhost {

struct Start {
    std::string program;                 // a path
    std::vector<std::string> arguments;  // behind the program's name
    // Descriptors that the process gets, under the same or another number. It also inherits each that
    // is not marked as closed on exec.
    struct Inherited {
        int ours;
        int its;
    };
    std::vector<Inherited> descriptors = {};
    std::optional<sigset_t> blocked = std::nullopt;  // its blocked signals; nothing: those of here
    std::optional<sigset_t> defaults =
        std::nullopt;  // signals that do in it what they do by default
};

// Starts a process. Throws std::system_error naming the program.
pid_t start_process(const Start& start);

// Waits for its end. Returns the wait status.
int wait_for_process(pid_t process);

struct Answer {
    std::string text;
    int status = 0;  // the wait status
};

// What a call gives that is made in a copy of this process, without standard streams. The copy ends with the
// call, with this process, and by SIGALRM after so many seconds. This process must have one thread. Throws
// std::system_error if there is no copy.
Answer answer_of_process(const std::function<std::string()>& call, unsigned seconds);

// The processes that descend from this one now, children of children included, but for some children and what
// descends from them.
std::vector<pid_t> descendants(const std::vector<pid_t>& without = {});

// Kills them, and those they start meanwhile, and waits until they are gone. This process must adopt
// orphans (PR_SET_CHILD_SUBREAPER). Returns those that could not be killed within two seconds: they
// hang inside the kernel.
std::vector<pid_t> kill_descendants(const std::vector<pid_t>& without = {});

}  // namespace qvhost
