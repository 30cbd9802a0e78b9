// What surrounds the program: where it lies, and the environment that tools get.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "qvhost/base/limits.h"

namespace qvhost {

// The running program's file. Throws std::system_error if the system does not tell.
std::filesystem::path program_file();

// The plug-in that was installed with the program.
std::filesystem::path installed_plugin();

// Sets what the tools of a collection find in their environment: a search path that has the
// system's directories, one locale, so that they print what parsers know, and their limits. What
// is run is told in `command_log`.
void set_tool_environment(const std::string& search_path, const Limits& limits,
                          const std::filesystem::path& command_log);

// No tool runs beyond that time.
void set_tool_deadline(std::chrono::steady_clock::time_point deadline);

}  // namespace qvhost
