// How the hosts of a fleet are: one line each, the worst first.
#pragma once

#include <string>
#include <vector>

#include "fleet/database.h"
#include "fleet/times.h"

namespace qvhost::fleet {

struct HostStatus {
    std::string name;           // its last one; its serial number or machine id where it has none
    std::string state;          // "critical", "warning", "unknown" or "ok"
    bool is_silent = false;     // it has not been heard of for too long
    Milliseconds age = 0;       // of its last run
    std::int64_t findings = 0;  // critical ones and warnings
    std::string worst;          // the first of them, in words
};

struct FleetStatus {
    std::vector<HostStatus> hosts;
    std::size_t replaced = 0;  // hosts that are another one now: by a new board, a new installation
};

// As at the time `now`. Among hosts of one state silent ones stand before others; a silent one that was well stands
// before the warnings.
FleetStatus status_of(Database& db, Milliseconds now, Milliseconds silent_after);

}  // namespace qvhost::fleet
