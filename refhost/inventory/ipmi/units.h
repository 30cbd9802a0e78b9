// The units in which sensors read, as ipmitool writes them, and what kind of sensor has which.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvhost::inventory {

// "temperature" for "degrees C"; "other" for a unit that no table knows. Fans may read in percent of
// their full speed, which only their names tell from other percentages.
std::string kind_of_sensor(std::string_view unit, std::string_view name);

bool is_unit(std::string_view text);

// The kind for an IPMI sensor type, as ipmiutil prints it: "01" is a temperature. Nothing for types
// that name no quantity.
std::optional<std::string> kind_of_sensor_type(std::string_view type);

}  // namespace qvhost::inventory
