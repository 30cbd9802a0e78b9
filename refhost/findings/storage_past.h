// Judges what the runs before say of storage: errors that grow, rebuilds that stand still, spares that are used up.
#pragma once

#include "findings/collector.h"
#include "findings/past.h"
#include "findings/redundancy.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

void judge_storage_past(const inventory::Inventory& inventory, const Past& past,
                        const Redundancy& redundancy, Collector& findings);

}  // namespace qvhost::findings
