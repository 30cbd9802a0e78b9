// The commands of a collection, as the plug-in's command log (QV_COMMAND_LOG) tells them.
#pragma once

#include <filesystem>
#include <vector>

#include "store/store.h"

namespace qvhost {

// In the order in which they were started; none if there is no log.
std::vector<CommandInfo> read_commands(const std::filesystem::path& log);

}  // namespace qvhost
