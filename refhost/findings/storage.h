// Judges volumes, arrays, drives, controllers, their batteries and enclosures.
#pragma once

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

// The drive, as its findings name it.
Subject subject_of(const inventory::Inventory& inventory, const inventory::Drive& drive);

void judge_storage(const inventory::Inventory& inventory, Collector& findings);

}  // namespace qvhost::findings
