// The compatibility layer: stand-ins at the head of a collection's search path, which make the plug-in's
// fixed commands meet the system that they run on. Each passes on what it is not there for.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost::compat {

// Where a layer lies, and what it stands before.
struct Place {
    std::filesystem::path directory;  // of the stand-ins, at the head of the search path
    std::filesystem::path program;  // this program; it is the stand-ins that are more than a script
    std::filesystem::path notes;    // a private directory in which stand-ins leave notes for others
    std::filesystem::path log_dir;
    std::filesystem::path log;
    unsigned log_level = 3;
    std::string search_path;  // behind the layer: where the system's own tools are
    // The IPMI driver's device, under the names that it has had.
    std::vector<std::filesystem::path> ipmi_devices = {"/dev/ipmi0", "/dev/ipmi/0",
                                                       "/dev/ipmidev/0"};
};

struct StandIn {
    const char* tool;
    const char* what;  // it does, for people
    // Its script. Empty: the system has no tool for it, so that the shell itself says "not found".
    std::string (*script)(const Place& place);
    // Whether it is a defence of the collection as well, and stays when the layer is not wanted.
    bool always = false;
};

// All that there are, in the order in which the tools are run.
const std::vector<StandIn>& stand_ins();

// Those that are of use on this system; with `wanted` false only the defences.
std::vector<const StandIn*> useful_stand_ins(const Place& place, bool wanted);

// Writes them. Throws std::system_error.
void write_layer(const Place& place, const std::vector<const StandIn*>& stand_ins);

// The tool's file in a search path, as a shell finds it; empty if there is none.
std::filesystem::path found_in(const std::string& search_path, const std::string& tool);

// From now on an IPMI driver that the layer starts outlives `service ipmi stop`. Nothing happens where no layer has
// made the directory of notes.
void keep_driver(const std::filesystem::path& notes);

// No longer. True: one was started, and `service ipmi stop` is to be run.
bool release_driver(const std::filesystem::path& notes);

// A stand-in that is more than a script: `qvhost stand-in NAME ...`, with the arguments behind
// "stand-in". Returns the exit status.
int run_stand_in(int argc, char** argv);

inline constexpr const char* kStandInCommand = "stand-in";

// In the environment of tools: the log in which stand-ins note what they did, instead of the place's.
inline constexpr const char* kLogVariable = "QV_STAND_IN_LOG";

}  // namespace qvhost::compat
