#include "compat/vendor_tools.h"

#include <unistd.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string_view>

#include "compat/script_parts.h"
#include "files/new_file.h"
#include "files/script.h"

namespace qvhost::compat {

namespace fs = std::filesystem;

namespace {

// Where vendors' packages put their tools. Only for these tools the search path is asked too: another
// program of a tool's usual name may know other commands.
constexpr struct {
    std::string_view tool;
    const char* directory;
} kPlaces[] = {
    {"storcli",  "/opt/MegaRAID/storcli" },
    {"arcconf",  "/usr/Arcconf"          },
    {"arcconf",  "/usr/StorMan"          },
    {"sas2ircu", "/opt/MegaRAID/sas2ircu"},
};

std::vector<std::string> names_of(const std::string& tool, const std::string& build) {
    std::vector<std::string> names{build};
    if (build.find("64") != std::string::npos) names.push_back(tool + "64");
    names.push_back(tool);
    return names;
}

std::vector<fs::path> places_of(const std::string& tool, const std::string& search_path) {
    std::vector<fs::path> places;
    for (const auto& [name, directory] : kPlaces) {
        if (name == tool) places.emplace_back(directory);
    }
    if (places.empty()) return places;
    std::istringstream directories(search_path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        if (directory.starts_with('/')) places.emplace_back(directory);
    }
    return places;
}

bool is_file(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

bool may_be_executed(const fs::path& path) { return ::access(path.c_str(), X_OK) == 0; }

VendorFile find_build(const std::string& tool, const std::string& build, const fs::path& installed,
                      const std::string& search_path, const WhyNotTrusted& why_not_trusted) {
    VendorFile found{.tool = tool, .build = build, .answers = {}};
    std::vector<fs::path> places{installed};
    for (const auto& place : places_of(tool, search_path)) places.push_back(place);
    for (const auto& place : places) {
        for (const auto& name : names_of(tool, build)) {
            const auto file = place / name;
            if (!is_file(file)) continue;
            if (auto why_not = why_not_trusted(file); !why_not.empty()) {
                found.refused.push_back({file, std::move(why_not)});
                continue;
            }
            found.answers = file;
            return found;
        }
    }
    // What is no file has the tool's name all the same: the shell says why it cannot be run.
    std::error_code ignored;
    const auto own = installed / build;
    if (found.refused.empty() && fs::exists(own, ignored)) found.answers = own;
    return found;
}

}  // namespace

std::vector<VendorFile> find_vendor_tools(const std::vector<WantedTool>& wanted,
                                          const fs::path& installed, const std::string& search_path,
                                          const WhyNotTrusted& why_not_trusted) {
    std::vector<VendorFile> files;
    std::set<std::string> builds;
    for (const auto& tool : wanted) {
        for (const auto& build : tool.builds) {
            if (builds.insert(build).second)
                files.push_back(
                    find_build(tool.name, build, installed, search_path, why_not_trusted));
        }
    }
    std::vector<std::string> others;
    std::error_code error;
    for (fs::directory_iterator entry(installed, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        if (is_file(entry->path()) && may_be_executed(entry->path()) && !builds.contains(name))
            others.push_back(name);
    }
    std::sort(others.begin(), others.end());
    for (const auto& name : others) {
        VendorFile file{.tool = name, .build = name, .answers = installed / name};
        if (auto why_not = why_not_trusted(file.answers); !why_not.empty())
            file = {name, name, {}, {{installed / name, std::move(why_not)}}};
        files.push_back(std::move(file));
    }
    return files;
}

std::map<std::string, fs::path> write_vendor_scripts(const std::vector<VendorFile>& files,
                                                     const Place& place,
                                                     const fs::path& directory) {
    std::map<std::string, fs::path> started;
    // The plug-in's chmod of all files there would complain if there were none.
    write_new_file(directory / "README",
                   "Scripts of a collection: each starts a vendor's tool where that lies.\n");
    for (const auto& file : files) {
        if (file.answers.empty()) continue;
        auto program = file.answers;
        if (!may_be_executed(program)) {
            program = place.notes / file.build;
            fs::copy_file(file.answers, program);
            fs::permissions(program, fs::perms::owner_read | fs::perms::owner_exec);
        }
        const auto quoted = shell_quoted(program);
        write_script(directory / file.build, beginning(place) + "[ -e " + quoted +
                                                 " ] || exec /bin/sh -c '\"$@\"' sh " + quoted +
                                                 " \"$@\"\nexec " + quoted + " \"$@\"\n");
        started[file.build] = program;
    }
    return started;
}

}  // namespace qvhost::compat
