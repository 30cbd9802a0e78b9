#include "compat/layer.h"

#include <unistd.h>

#include <sstream>

#include "compat/script_parts.h"
#include "files/script.h"

namespace qvhost::compat {

namespace fs = std::filesystem;

const std::vector<StandIn>& stand_ins() {
    // clang-format off
    static const std::vector<StandIn> all = {
        {"uname",         "uname -i answers the machine where the system says \"unknown\"",                                  uname_script},
        {"sosreport",     "sosreport runs sos report where only that is there",                                              sosreport_script},
        {"supportconfig", "supportconfig packs where nobody else writes, if the system allows",                              supportconfig_script},
        {"mv",            "of /tmp, only support archives that this collection packed are moved in, under any of their names", mv_script, true},
        {"service",       "service ipmi starts what starts the IPMI driver here, and stops it only if it was started for this", service_script},
        {"ipmitool",      "ipmitool's remark on its missing list of enterprises goes to the log, apart from its answers",     ipmitool_script},
    };
    // clang-format on
    return all;
}

std::vector<const StandIn*> useful_stand_ins(const Place& place, bool wanted) {
    std::vector<const StandIn*> useful;
    for (const auto& one : stand_ins()) {
        if ((wanted || one.always) && !one.script(place).empty()) useful.push_back(&one);
    }
    return useful;
}

void write_layer(const Place& place, const std::vector<const StandIn*>& stand_ins) {
    remember_archives(place.notes);
    for (const auto* one : stand_ins) write_script(place.directory / one->tool, one->script(place));
}

fs::path found_in(const std::string& search_path, const std::string& tool) {
    std::istringstream directories(search_path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        auto file = fs::path(directory.empty() ? "." : directory) / tool;
        std::error_code error;
        if (fs::is_regular_file(file, error) && ::access(file.c_str(), X_OK) == 0) return file;
    }
    return {};
}

std::string beginning(const Place& place) {
    return "#!/bin/sh\nPATH=" + shell_quoted(place.search_path) + "\nexport PATH\nnote() { " +
           shell_quoted(place.program) + " " + kStandInCommand + " note " +
           shell_quoted(place.log) + " " + std::to_string(place.log_level) + " \"$1\"; }\n";
}

std::string unless_gone(const std::string& tool) {
    return "command -v " + tool + " >/dev/null || exec /bin/sh -c '" + tool +
           " \"$@\"' sh \"$@\"\n";
}

std::string start(const std::string& tool) {
    return unless_gone(tool) + "exec " + tool + " \"$@\"\n";
}

std::string start_in_program(const Place& place, const std::string& name) {
    return "exec " + shell_quoted(place.program) + " " + kStandInCommand + " " + name + " " +
           shell_quoted(place.log) + " " + std::to_string(place.log_level);
}

}  // namespace qvhost::compat
