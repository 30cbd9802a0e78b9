// What several captures tell of one controller, volume, drive, ... becomes one entity.
#pragma once

#include <string>
#include <vector>

#include "inventory/inventory.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// Drives are the same by controller, enclosure and slot; behind no controller by serial number or
// device. Of each field the first that is told counts, in the order in which the captures were read, and
// an entity stands where its row in a list does, if it is in one. Returns what shows only now: a list of
// details that ends before all drives of its controller were told.
std::vector<CaptureGap> join_storage(Inventory& inventory);

}  // namespace qvhost::inventory
