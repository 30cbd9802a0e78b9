// Facts about the machine, a few lines that its captures tell.
#pragma once

#include <vector>

#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

// In the order in which people ask for them. What no capture tells is left out, never guessed.
std::vector<Fact> machine_facts(const Store& store, const LogDir& dir);

}  // namespace qvhost
