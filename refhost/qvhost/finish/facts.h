// Facts about the machine, a few lines from its inventory.
#pragma once

#include <vector>

#include "inventory/inventory.h"
#include "store/store.h"

namespace qvhost {

// In the order in which people ask for them. What no capture tells is left out, never guessed.
std::vector<Fact> machine_facts(const inventory::Inventory& inventory);

}  // namespace qvhost
