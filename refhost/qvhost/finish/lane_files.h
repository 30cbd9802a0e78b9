// The files that the lanes of a collection have each for itself.
#pragma once

#include <vector>

#include "qvhost/base/log_dir.h"

namespace qvhost {

// The lanes that have left a journal or a log of commands, in order; the first one always.
std::vector<unsigned> lanes_in(const LogDir& dir);

// Puts what the further lanes have logged, and what their tools have printed past their captures, behind what
// the first one has, in their order. What does not fit on the disk stays where it is.
void join_lane_logs(const LogDir& dir);

// Removes journals and logs of commands when the report is finished; the journals of lanes in `damaged` get that
// ending. The first lane's goes before all others, also on the disk: it says that the report is not finished, and if
// a power cut brought it back, the report would be made anew.
void remove_lane_files(const LogDir& dir, const std::vector<unsigned>& damaged = {});

}  // namespace qvhost
