// Recovers what a collection that was killed has left.
#pragma once

#include <string>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// Makes a new store of what the journal holds, finishes the report with it, and puts it in the place of the
// store that was left, which is only read. Returns for people what was found; empty: nothing was left.
// Throws std::runtime_error if it cannot be saved. The directory's lock must be held.
std::string recover(const LogDir& dir);

}  // namespace qvhost
