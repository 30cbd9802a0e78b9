// A recorded server from a report: what its commands said, as far as the report keeps it.
#pragma once

#include <vector>

#include "compat/recorder.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/replay/recording.h"
#include "store/store.h"

namespace qvhost {

// `vendors` are the tools that a plug-in runs from qv_tools. `notes` are what the tools were seen to say while it was
// collected, if anybody watched them: how they ended, and what no capture has.
Recording record_report(const Store& store, const LogDir& dir,
                        const std::vector<VendorTool>& vendors,
                        const std::vector<compat::ToolNote>& notes = {});

}  // namespace qvhost
