// How tools call power supplies: "PSU1", "PSU 1", "PS2", "Power Supply 1".
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qvhost::inventory {

// The power supply's name with which the text begins; empty if it begins with none.
std::string_view power_supply_name(std::string_view text);

// The number in that name.
std::optional<std::int64_t> power_supply_number(std::string_view text);

}  // namespace qvhost::inventory
