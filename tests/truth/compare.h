// Compares what a report says of a server with the truth about it.
#pragma once

#include <string>
#include <vector>

#include "page.h"

namespace truth {

// Each difference in a line. `report` has the keys inventory, findings and health of report.json; its key
// events, where it has one, is compared as well.
std::vector<std::string> compare(const Json& truth, const Json& report);

}  // namespace truth
