// Health, findings and inventory as JSON, for report.json, the page and `check`.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>

#include "findings/finding.h"
#include "inventory/inventory.h"

namespace qvhost {

nlohmann::ordered_json json_of(const std::vector<findings::Health>& health);
nlohmann::ordered_json json_of(const findings::Finding& finding);
nlohmann::ordered_json json_of(const std::vector<findings::Finding>& findings);

// A list of them, each on a line. Memory does not grow with the list.
void put_findings(const std::vector<findings::Finding>& findings, std::ostream& out);

// {"systems": [ENTITY, ...], ...}: each kind of entity a list, each entity on a line, each field a key. Memory does
// not grow with the inventory. `may_be_null`: what is not known is null; else it is left out.
void put_inventory(const inventory::Inventory& inventory, bool may_be_null, std::ostream& out);

}  // namespace qvhost
