// How the collecting process is started.
#pragma once

#include <sys/types.h>

#include <string>

#include "qvhost/log_dir.h"
#include "qvhost/options.h"

namespace qvhost {

// What the plug-in runs from: the program that becomes the collecting process (the tools are in
// qv_tools beside it) and the search path of its commands.
struct Launch {
    std::string program;
    std::string search_path;

    std::string tools_dir() const { return program.substr(0, program.rfind('/')) + "/qv_tools/"; }
};

// This program on this machine. The search path is the user's, with the system's directories where
// they are missing; parts that depend on the current directory are left out.
Launch launch_here();

struct Child {
    pid_t pid = 0;
    int complaints = -1;  // what it writes to kComplaintFd can be read here
};

// Starts the collecting process in a session of its own and in the log directory; it dies with
// this process. Throws std::runtime_error.
Child start_child(const Launch& launch, const CollectOptions& options, const LogDir& dir);

}  // namespace qvhost
