// What the BMC says of the whole chassis: its status, its error light, the redundancy of its supplies.
#pragma once

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

// These sum up what sensors, supplies and drives tell better: they are told of where nothing else is. All
// others must have been judged.
void judge_chassis(const inventory::Inventory& inventory, Collector& findings);

}  // namespace qvhost::findings
