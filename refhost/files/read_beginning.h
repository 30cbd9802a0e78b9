// The first bytes of a file that a tool, or somebody, left in a directory.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace qvhost {

// Follows no link. Empty if it is no regular file or cannot be read.
std::string read_beginning(const std::filesystem::path& path, std::size_t most_bytes);

}  // namespace qvhost
