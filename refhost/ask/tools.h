// Where the tools for the host's own questions are: the makers' in qv_tools beside the program, as plug-ins
// have them, all of them on the search path.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qvhost::ask {

struct FoundTool {
    std::string name;     // "storcli", "perccli": without directory and build
    std::string command;  // how the shell calls it
};

struct ToolPlaces {
    std::filesystem::path vendor_tools;
    std::string search_path;  // directories with ":" between
    // Why a file must not be run, for people; empty: it may.
    std::function<std::string(const std::filesystem::path&)> why_not_trusted;
};

struct Search {
    std::vector<FoundTool> found;  // the tool and its renamed builds, the preferred one first
    std::string problem;           // why one that is there cannot be run; empty: nothing is wrong
};

Search find_tool(std::string_view tool, const ToolPlaces& places);

// The tools that questions are asked of, by all names they go under.
std::vector<std::string> tool_names();

// "smartctl is not installed (Debian package smartmontools)"
std::string not_installed(std::string_view tool);

}  // namespace qvhost::ask
