// Makes one entity of what several of the BMC's captures say of one thing.
#pragma once

#include "inventory/inventory.h"

namespace qvhost::inventory {

// After all captures are read. Sensors are joined by name and, where a name repeats, by order; power
// supplies by serial number or the number in their names; the BMC is one.
void join_bmc(Inventory& found);

}  // namespace qvhost::inventory
