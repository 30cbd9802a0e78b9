#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qvhost/base/limits.h"

namespace qvhost {

// What the user asked of `collect` and `replay`.
struct CollectOptions {
    std::filesystem::path log_dir;
    unsigned log_level = 3;
    std::vector<std::string> modules;  // none: all
    std::vector<std::string> tables;   // none: all
    AskedLimits limits;
    std::filesystem::path plugin;   // empty: the one that was installed with the program
    std::vector<std::string> also;  // operations that no module calls: "pmc", "fru0", "bios"
    bool quiet = false;
    bool dry_run = false;  // tell what would be done, and do nothing
};

// The program whose directory the plug-in takes for its own, and what its tools find around them.
struct Stage {
    std::filesystem::path program;  // an executable qvhost with qv_tools/ and ../lib beside it
    std::string search_path;        // PATH; empty: the user's own and the system's
    bool kill_leftovers = false;    // whether tools still running at the end are killed
};

// What the user asked of `show`.
struct ShowOptions {
    std::filesystem::path report;     // a log directory or a store file; so with all that follow
    std::vector<std::string> tables;  // none: all
    bool no_pager = false;
};

// What the user asked of `query`.
struct QueryOptions {
    std::filesystem::path report;
    std::string sql;
    std::string format = "table";
    bool raw = false;
};

// What the user asked of `export`.
struct ExportOptions {
    std::filesystem::path report;
    std::string format;
    std::filesystem::path output;  // empty: standard output
    std::string table;             // empty: all
    bool raw = false;
};

}  // namespace qvhost
