// Makes one entity of what several of the operating system's captures say of one thing.
#pragma once

#include "inventory/inventory.h"

namespace qvhost::inventory {

// After all captures are read. What the firmware says of a processor goes before what the kernel says.
void join_machine(Inventory& found);

}  // namespace qvhost::inventory
