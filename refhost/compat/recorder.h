// Stand-ins that note what a tool says and how it ends, and pass all of it on: a collection that is to be recorded has
// them before all other tools, the layer's stand-ins included.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "compat/layer.h"

namespace qvhost::compat {

// Writes one for each tool of the layer and of its search path into `directory`, which then is the head of the search
// path, but none for filters in command lines and for what `is_refused`; and one in place of each script in
// `vendor_tools`. `notes` is where they leave their notes. Throws std::system_error.
void write_recorders(const Place& place, const std::filesystem::path& directory,
                     const std::filesystem::path& vendor_tools, const std::filesystem::path& notes,
                     const std::function<bool(const std::filesystem::path& file)>& is_refused);

// What one of them has noted.
struct ToolNote {
    std::filesystem::path directory;  // of the note's own files
    std::filesystem::path tool;       // "ipmitool", "qv_tools/storcli_x64"
    std::vector<std::string> arguments;
    bool has_output = false;  // the file "stdout" is there: what it printed and no capture has
    bool has_errors = false;  // the file "stderr" is there
    int exit = 0;
    int signal = 0;
    double seconds = 0;
};

// Those of the tools that came to their end, in the order in which they began.
std::vector<ToolNote> notes_in(const std::filesystem::path& notes);

}  // namespace qvhost::compat
