// Where sample module 2 logs.
#pragma once

#include "log/unit_log.h"

namespace marlox::repository::sample2 {

inline constexpr capture::UnitLog unit{"qvmodules/rsamplemodule2"};

}  // namespace marlox::repository::sample2
