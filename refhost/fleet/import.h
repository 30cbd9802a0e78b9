// Stores what bundles say in a fleet's database.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "fleet/database.h"
#include "fleet/incoming_bundle.h"

namespace qvhost::fleet {

struct Imported {
    bool is_new = false;  // false: the run is there already
    // What the host is to those that were there: "new host", "new installation of ...", "new board in ...";
    // empty: it is known.
    std::string host;
    // The same run came from another bundle, which stays what is stored.
    bool is_other_bundle = false;
    std::size_t rows = 0;    // that the bundle has
    std::size_t stored = 0;  // of these, rows that were stored
};

// In one transaction; the runs of all bundles are of hosts that differ. What comes of each, in their order. The same
// bundles in any order, and any number of times, give the same tables; but for the lines of events.
std::vector<Imported> import(Database& db, std::span<const IncomingBundle* const> bundles);

// Before a transaction: whatever the runs need of the schema.
void prepare_months(Database& db, std::span<const IncomingBundle* const> bundles);

}  // namespace qvhost::fleet
