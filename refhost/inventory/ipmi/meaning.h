// What IPMI's events and states mean: how bad it is that one holds, by the standard's sensor types and
// by the words that ipmitool and ipmiutil have for them.
#pragma once

#include <optional>
#include <string_view>

#include "inventory/entities.h"

namespace qvhost::inventory {

// How bad it is that the state holds; nothing if no table knows the words. Behind them may stand more:
// "Correctable ECC, DIMM(5)".
std::optional<Severity> severity_of_state(std::string_view words);

// How bad it is that the state went: `info`, but for what should stay ("Fully Redundant", "Presence
// detected").
Severity severity_of_deasserted(std::string_view words);

// "Lower Critical going low": how bad it is that a reading crossed a threshold. Nothing if the words
// are no such event. A reading that comes back is `info`.
std::optional<Severity> severity_of_threshold(std::string_view words);

// "Memory ECC": the sensor type with which ipmitool's word for a sensor begins; empty if none.
std::string_view sensor_type_of(std::string_view text);

}  // namespace qvhost::inventory
