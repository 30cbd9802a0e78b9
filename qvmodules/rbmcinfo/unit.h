#pragma once

#include "capture/log.h"

namespace marlox::repository {

// The log unit of the BMC module, the tool functions and the system collectors.
inline constexpr capture::UnitLog unit{"qvmodules/rbmcinfo"};

}  // namespace marlox::repository
