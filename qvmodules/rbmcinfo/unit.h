// Where the BMC module logs.
#pragma once

#include "log/unit_log.h"

namespace marlox::repository {

// The log unit of the BMC module and the system collectors.
inline constexpr capture::UnitLog unit{"qvmodules/rbmcinfo"};

}  // namespace marlox::repository
