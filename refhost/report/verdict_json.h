// Health, findings and inventory as JSON, for report.json, the page and `check`.
#pragma once

#include <nlohmann/json.hpp>

#include "findings/finding.h"
#include "inventory/inventory.h"

namespace qvhost {

nlohmann::ordered_json json_of(const std::vector<findings::Health>& health);
nlohmann::ordered_json json_of(const std::vector<findings::Finding>& findings);

// Each kind of entity a list, each field a key; what is not known is null.
nlohmann::ordered_json json_of(const inventory::Inventory& inventory);

}  // namespace qvhost
