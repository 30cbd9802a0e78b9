// Dates and times as the tools print them for the BMC's clock.
#pragma once

#include <string_view>

#include "inventory/entities.h"

namespace qvhost::inventory {

// "11/14/23", "08/06/2020", "14.11.2023" or "2023-11-14", and "22:13:20", "22:13:20 UTC" or
// "10:13:20 PM UTC", as an ISO 8601 text. Empty where it is neither, and before 2000: a clock that was
// never set counts from 1970 or from its BMC's start. Two digits are a year of 1970 to 2069.
Text bmc_time(std::string_view date, std::string_view time);

// Whether the texts are a date and a time, set or not.
bool is_bmc_time(std::string_view date, std::string_view time);

}  // namespace qvhost::inventory
