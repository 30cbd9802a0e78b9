// Stand-ins for the tools of a recorded server.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qvhost/base/declared_tables.h"
#include "qvhost/replay/machine.h"

namespace qvhost {

// Writes a stand-in for each of the machine's tools: those that `vendors` names into `vendor_tools`, as
// every file of theirs, all others into `search_path`, beside the harmless real tools that command lines
// need. What the machine has not recorded is not there. In a command's arguments "{LOG}" is the log
// directory with its "/".
void write_stand_ins(const Machine& machine, const std::filesystem::path& vendor_tools,
                     const std::filesystem::path& search_path, const std::string& log_dir,
                     const std::vector<VendorTool>& vendors);

}  // namespace qvhost
