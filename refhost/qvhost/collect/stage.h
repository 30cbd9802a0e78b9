// What a collection works on: this machine with the installed program and tools, or a replay's.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "qvhost/base/machine_identity.h"

namespace qvhost {

// The program that is run for a collection, and what is known before it runs. The plug-in looks for its tools beside the
// running program, in qv_tools.
struct Stage {
    std::filesystem::path program;  // an executable qvhost with qv_tools/ and ../lib beside it
    bool kill_leftovers = false;    // whether tools still running at the end are killed
    MachineIdentity machine;
    bool summary = true;  // whether the summary is printed
    // Tools that scripts stand in for, and what those do; builds that the plug-in looks for in qv_tools,
    // and the files that answer.
    std::vector<std::pair<std::string, std::string>> stand_ins = {};
    std::vector<std::pair<std::string, std::string>> vendor_files = {};
    // Builds again: the file that the layer's script starts, and why none is started though there is one.
    std::map<std::string, std::filesystem::path> started_files = {};
    std::map<std::string, std::string> refused_files = {};
    std::string search_path = {};  // behind the layer; empty: there is none
    // Of what is replayed: what verdicts needed and could not be asked, by subsystem.
    std::vector<std::pair<std::string, std::string>> lacks = {};
    std::string recorded;  // when what is replayed was recorded, by the server's clock; empty: now

    std::filesystem::path vendor_tools() const { return program.parent_path() / "qv_tools"; }
};

}  // namespace qvhost
