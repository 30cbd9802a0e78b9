#pragma once

#include <string>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// Brings what a collection that was killed has left in its journal into its store. Tells for people
// what was found; empty: nothing was left. Throws std::runtime_error if it cannot be saved. The
// directory's lock must be held, or nobody be collecting.
std::string recover(const LogDir& dir);

}  // namespace qvhost
