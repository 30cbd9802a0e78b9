#include "ask/tools.h"

#include <unistd.h>

#include <array>
#include <optional>
#include <sstream>

#include "files/script.h"

namespace qvhost::ask {

namespace fs = std::filesystem;

namespace {

struct ToolRow {
    std::string_view tool;
    std::string_view names;    // under which it goes, with blanks between, the preferred one first
    std::string_view package;  // of Debian; empty: it comes from the controller's maker
};

// clang-format off
constexpr auto kTools = std::to_array<ToolRow>({
    {"arcconf",   "arcconf",                             ""               },
    {"cat",       "cat",                                 "coreutils"      },
    {"dmesg",     "dmesg",                               "util-linux"     },
    {"dmidecode", "dmidecode",                           "dmidecode"      },
    {"hostname",  "hostname",                            "hostname"       },
    {"ipmitool",  "ipmitool",                            "ipmitool"       },
    {"lsblk",     "lsblk",                               "util-linux"     },
    {"lspci",     "lspci",                               "pciutils"       },
    {"mdadm",     "mdadm",                               "mdadm"          },
    {"multipath", "multipath",                           "multipath-tools"},
    {"sas2ircu",  "sas2ircu",                            ""               },
    {"sas3ircu",  "sas3ircu",                            ""               },
    {"smartctl",  "smartctl",                            "smartmontools"  },
    {"ssacli",    "ssacli hpssacli hpacucli",            ""               },
    {"storcli",   "storcli perccli storcli2 perccli2",   ""               },
    {"uname",     "uname",                               "coreutils"      },
    {"zpool",     "zpool",                               "zfsutils-linux" },
});
// clang-format on

const ToolRow* row_of(std::string_view tool) {
    for (const auto& row : kTools) {
        if (row.tool == tool) return &row;
    }
    return nullptr;
}

bool can_run(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && ::access(file.c_str(), X_OK) == 0;
}

// As the plug-in names builds: "storcli_x64"; some tools have one build without a suffix.
std::vector<std::string> builds_of(const std::string& name) {
    return {name + (sizeof(void*) == 8 ? "_x64" : "_x32"), name};
}

// As makers' packages name them: "storcli64".
std::vector<std::string> files_of(const std::string& name) {
    return sizeof(void*) == 8 ? std::vector<std::string>{name, name + "64"}
                              : std::vector<std::string>{name};
}

std::optional<FoundTool> in_qv_tools(const std::string& name, const ToolPlaces& places,
                                     std::string& problem) {
    for (const auto& build : builds_of(name)) {
        const auto file = places.vendor_tools / build;
        std::error_code error;
        if (!fs::is_regular_file(file, error)) continue;
        if (!can_run(file)) {
            problem = file.string() + " is not executable";
        } else if (const auto reason = places.why_not_trusted(file); !reason.empty()) {
            problem = reason;
        } else {
            return FoundTool{name, shell_quoted(file.string())};
        }
    }
    return std::nullopt;
}

std::optional<FoundTool> on_search_path(const std::string& name, const ToolPlaces& places,
                                        std::string& problem) {
    for (const auto& file_name : files_of(name)) {
        std::istringstream directories(places.search_path);
        for (std::string directory; std::getline(directories, directory, ':');) {
            // The shell finds it in the first directory that has it, so that one counts.
            const auto file = fs::path(directory) / file_name;
            if (!fs::path(directory).is_absolute() || !can_run(file)) continue;
            const auto reason = places.why_not_trusted(file);
            if (reason.empty()) return FoundTool{file_name, file_name};
            problem = reason;
            break;
        }
    }
    return std::nullopt;
}

}  // namespace

Search find_tool(std::string_view tool, const ToolPlaces& places) {
    Search search;
    const auto* row = row_of(tool);
    std::istringstream names(std::string(row ? row->names : tool));
    for (std::string name; names >> name;) {
        auto found = in_qv_tools(name, places, search.problem);
        if (!found) found = on_search_path(name, places, search.problem);
        if (found) search.found.push_back(std::move(*found));
    }
    return search;
}

std::vector<std::string> tool_names() {
    std::vector<std::string> all;
    for (const auto& row : kTools) {
        std::istringstream names{std::string(row.names)};
        for (std::string name; names >> name;) all.push_back(name);
    }
    return all;
}

std::string not_installed(std::string_view tool) {
    const auto* row = row_of(tool);
    const auto from = !row || row->package.empty()
                          ? std::string("it comes from the controller's maker")
                          : "Debian package " + std::string(row->package);
    return std::string(tool) + " is not installed (" + from + ")";
}

}  // namespace qvhost::ask
