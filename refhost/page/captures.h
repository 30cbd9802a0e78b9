// The captures in a log directory.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "store/store.h"

namespace qvhost::page {

struct Capture {
    std::string name;
    std::uintmax_t size = 0;
    const char* kind = "other";         // "text", "binary", "directory" or "other"
    std::vector<std::size_t> commands;  // those that wrote it, by their position
};

// Everything in the directory but the reports, by name.
std::vector<Capture> captures_in(const std::filesystem::path& log_dir,
                                 const std::vector<CommandInfo>& commands);

// The first bytes of a capture; empty if it is no regular file or cannot be read.
std::string beginning_of(const std::filesystem::path& path, std::size_t most);

}  // namespace qvhost::page
