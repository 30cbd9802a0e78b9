// Why a file cannot be run as a program.
#pragma once

#include <filesystem>
#include <string>

namespace qvhost {

// For people, such as "it is a directory"; empty: nothing tells that it cannot. The file must be there.
std::string why_not_executable(const std::filesystem::path& file);

}  // namespace qvhost
