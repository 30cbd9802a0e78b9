// The earlier runs of a log directory, as a verdict and a comparison need them.
#pragma once

#include <vector>

#include "compare/compare.h"
#include "findings/history.h"
#include "inventory/inventory.h"
#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

// What a comparison reads of a report.
compare::Side side_of(const Store& store);

// What the earlier runs of the same machine say of the inventory: which counters have grown within the last
// thirty days, what has stayed the same, which hot spares are in use. `store` has the collection's own facts. A
// run whose report is damaged tells nothing.
findings::Past past_of(const Store& store, const LogDir& dir,
                       const inventory::Inventory& inventory);

// Says of each finding since when it is there.
void add_first_seen(const Store& store, const LogDir& dir, const inventory::Inventory& inventory,
                    findings::Verdict& verdict);

}  // namespace qvhost
