// Recovers what a collection that was killed has left.
#pragma once

#include <string>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// Imports the rest of the journal into the store and finishes the report. Returns for people what was
// found; empty: nothing was left. Throws std::runtime_error if it cannot be saved. The directory's lock
// must be held.
std::string recover(const LogDir& dir);

}  // namespace qvhost
