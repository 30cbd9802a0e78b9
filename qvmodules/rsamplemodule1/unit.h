// Where sample module 1 logs.
#pragma once

#include "log/unit_log.h"

namespace marlox::repository::sample1 {

inline constexpr capture::UnitLog unit{"qvmodules/rsamplemodule1"};

}  // namespace marlox::repository::sample1
