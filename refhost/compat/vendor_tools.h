// Vendors' tools under the names and in the places where people have them, for a plug-in that looks for
// builds with names of its own: storcli_x64 is what its vendor delivers as storcli64.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "compat/layer.h"

namespace qvhost::compat {

// A tool that the plug-in runs from qv_tools.
struct WantedTool {
    std::string name;                 // "storcli"
    std::vector<std::string> builds;  // "storcli_x32", "storcli_x64"
};

// Why a program must not be run, because others could have written it; empty: it may.
using WhyNotTrusted = std::function<std::string(const std::filesystem::path& program)>;

struct Candidate {
    std::filesystem::path file;
    std::string why_not;  // it is passed over; empty: it answers
};

struct VendorFile {
    std::string tool;
    std::string build;                    // the name that the plug-in looks for
    std::filesystem::path answers;        // which file; empty: none
    std::vector<Candidate> refused = {};  // files that are there and must not be run
};

// Looks for each build in `installed` (the installed qv_tools), under its own name and its usual ones, and
// for tools that have a place of their own in the system there and in the search path. Programs in
// `installed` that no tool claims answer for themselves.
std::vector<VendorFile> find_vendor_tools(const std::vector<WantedTool>& wanted,
                                          const std::filesystem::path& installed,
                                          const std::string& search_path,
                                          const WhyNotTrusted& why_not_trusted);

// Writes a script for each file that answers into `directory`. It starts the file where that lies; one that
// may not be executed, as tools are delivered, is started as a copy. Returns which file is started, by build.
// Throws std::exception.
std::map<std::string, std::filesystem::path> write_vendor_scripts(
    const std::vector<VendorFile>& files, const Place& place,
    const std::filesystem::path& directory);

}  // namespace qvhost::compat
