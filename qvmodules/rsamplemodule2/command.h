// How the commands of sample module 2 are written out.
#pragma once

#include <string>
#include <string_view>

#include "run/command.h"
#include "tools/tools.h"

namespace marlox::repository::sample2 {

// The command with its places filled in.
inline std::string tool_command(std::string_view text, int controller = 0) {
    return capture::expand(text, {current_absolute_path2, linux_x32_x64, controller});
}

}  // namespace marlox::repository::sample2
