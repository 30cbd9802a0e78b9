// The collecting child: the process that loads the plug-in and runs its callbacks.
#pragma once

#include <string>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

// The hidden sub-command by which the parent starts its child.
inline constexpr const char* kChildCommand = "collecting-child";

// What the child is started with: the command line behind the program's name.
std::vector<std::string> child_arguments(const CollectOptions& options, const Stage& stage,
                                         int lifeline);

// Collects into the options' log directory, every step noted in the journal. `lifeline` is the
// reading end of a pipe whose other end the parent holds: when it closes, the parent is gone and
// the child ends with all tools it started. Returns the exit status.
int run_child(const CollectOptions& options, const Stage& stage, int lifeline);

}  // namespace qvhost
