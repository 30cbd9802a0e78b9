#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost {

// What the user asked of `collect` and `replay`.
struct CollectOptions {
    std::filesystem::path log_dir;
    unsigned log_level = 3;
    std::vector<std::string> modules;  // none: all
    std::vector<std::string> tables;   // none: all
    unsigned tool_timeout = 300;       // seconds
    std::filesystem::path plugin;      // empty: the one that was installed with the program
    std::vector<std::string> also;     // operations that no module calls: "pmc", "fru0", "bios"
    bool quiet = false;
};

// The program whose directory the plug-in takes for its own, and what its tools find around them.
struct Stage {
    std::filesystem::path program;  // an executable qvhost with qv_tools/ and ../lib beside it
    std::string search_path;        // PATH; empty: the user's own and the system's
    bool kill_leftovers = false;    // whether tools still running at the end are killed
};

}  // namespace qvhost
