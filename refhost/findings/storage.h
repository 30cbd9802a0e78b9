// Judges volumes, arrays, drives, controllers, their batteries and enclosures.
#pragma once

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

void judge_storage(const inventory::Inventory& inventory, Collector& findings);

}  // namespace qvhost::findings
