// What an earlier collection has left in a log directory.
#pragma once

#include <string>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// Makes room for a new report. An earlier one moves aside, with its log, and what was found is told
// for people; empty: nothing was there. The lock must be held.
std::string make_room_for_report(const LogDir& dir);

}  // namespace qvhost
