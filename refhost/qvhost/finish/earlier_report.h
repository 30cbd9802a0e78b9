// What an earlier collection has left in a log directory.
#pragma once

#include <string>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// Makes an empty report directory. An earlier report moves aside, with its log; one of the profile "health"
// gives way to the next of these (`is_quick`), which may come every five minutes. Returns for people what was
// found and kept; empty: nothing was there. The lock must be held.
std::string make_room_for_report(const LogDir& dir, bool is_quick);

}  // namespace qvhost
