// Judges volumes, arrays, drives, controllers, their batteries and enclosures.
#pragma once

#include "findings/collector.h"
#include "findings/past.h"
#include "findings/redundancy.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

// Returns of what nothing more may be lost.
Redundancy judge_storage(const inventory::Inventory& inventory, const Past& past,
                         Collector& findings);

// Whether it says that it is being rebuilt.
bool is_rebuilt(const inventory::Volume& volume);

}  // namespace qvhost::findings
