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

// Judges what the runs before say of it: errors that grow, rebuilds that stand still, spares that are used up.
void judge_storage_past(const inventory::Inventory& inventory, const Past& past,
                        const Redundancy& redundancy, Collector& findings);

// Whether it says that it is being rebuilt.
bool is_rebuilt(const inventory::Volume& volume);

}  // namespace qvhost::findings
