// What an earlier collection has left in a log directory.
#pragma once

#include <string>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// Makes an empty report directory. An earlier report moves aside, with its log. Returns for people what
// was found; empty: nothing was there. The lock must be held.
std::string make_room_for_report(const LogDir& dir);

}  // namespace qvhost
