// Removes hosts and old runs from a fleet.
#pragma once

#include <string>
#include <vector>

#include "fleet/database.h"
#include "fleet/times.h"

namespace qvhost::fleet {

// The hosts that go by this name, serial number, machine id or key.
std::vector<std::int64_t> hosts_named(Database& db, const std::string& name);

// Removes all that is known of them.
void forget_hosts(Database& db, const std::vector<std::int64_t>& hosts);

// Removes the runs before that time, but for each host's last one. What was true before and still is counts from the
// first run that is left. Returns how many runs went.
std::size_t forget_runs_before(Database& db, Milliseconds time);

}  // namespace qvhost::fleet
