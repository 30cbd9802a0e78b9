// The collecting process: it loads the plug-in, asks it for the tables and files what comes in the
// journal. It runs in the log directory.
#pragma once

#include "qvhost/options.h"

namespace qvhost {

// The file descriptor on which it tells the supervisor what it cannot file.
inline constexpr int kComplaintFd = 3;

// The process's exit status: 0 if the journal tells everything.
int collect_in_child(const CollectOptions& options);

}  // namespace qvhost
