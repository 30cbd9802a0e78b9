// `qvhost collect`: a collection from this machine.
#pragma once

#include "compat/layer.h"
#include "compat/vendor_tools.h"
#include "qvhost/base/options.h"

namespace qvhost {

// Collects, with the vendors' tools beside this program, and with the compatibility layer unless it is not
// wanted. Returns and throws as collect(). The summary is printed if `summary` is set. With a directory `tool_notes`
// what each tool says is noted there, behind the layer (compat/recorder.h).
int collect_here(CollectOptions options, bool summary = true,
                 const std::filesystem::path& tool_notes = {});

// Which files answer for the vendors' tools that the plug-in looks for (empty: the installed one).
std::vector<compat::VendorFile> vendor_files_here(const std::filesystem::path& plugin);

}  // namespace qvhost
