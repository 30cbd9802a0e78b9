// How the commands of the BMC module are written out.
#pragma once

#include <string>
#include <string_view>

#include "run/command.h"
#include "tools/tools.h"

namespace marlox::repository {

// The command with its places filled in.
inline std::string bmc_command(std::string_view text) {
    return capture::expand(text, {current_absolute_path_bmc, linux_x32_x64});
}

}  // namespace marlox::repository
