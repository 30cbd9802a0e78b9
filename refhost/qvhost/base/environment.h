// The surroundings: where the program lies, and the environment that its tools get.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "qvhost/base/limits.h"

namespace qvhost {

// The tools that ask the BMC, as their names begin.
inline constexpr std::array<std::string_view, 2> kBmcTools{"ipmitool", "ipmiutil"};

inline bool is_bmc_tool(std::string_view tool) {
    return std::any_of(kBmcTools.begin(), kBmcTools.end(),
                       [&](std::string_view name) { return tool.starts_with(name); });
}

// The running program's file. Throws std::system_error if the system does not tell.
std::filesystem::path program_file();

// The plug-in that was installed with the program.
std::filesystem::path installed_plugin();

// The user's search path with the system's directories behind it.
std::string usual_search_path();

// Sets the environment of the tools of a collection: a search path that has the system's directories,
// one locale, so that they print what parsers know, their limits, what the disk keeps free, the file in which the
// plug-in logs its commands, and which of them ask the BMC.
void set_tool_environment(const std::string& search_path, const Limits& limits,
                          std::uint64_t free_bytes, const std::string& tool_limits,
                          const std::filesystem::path& command_log);

// Sets the time at which the plug-in stops every tool.
void set_tool_deadline(std::chrono::steady_clock::time_point deadline);

}  // namespace qvhost
