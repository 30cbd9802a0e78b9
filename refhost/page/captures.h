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

}  // namespace qvhost::page
