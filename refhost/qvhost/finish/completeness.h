// Whether a collection that came to its end is complete.
#pragma once

#include <string>

#include "qvhost/finish/reasons.h"

namespace qvhost {

// Why it is not: a limit has stopped a command or kept it from starting, or every tool of a module
// failed. For people; empty: it is complete. One tool's own death, a tool that is not installed and a BMC
// that the machine does not have leave it complete.
std::string why_incomplete(const Store& store, const CommandLog& log, const Reasons& reasons,
                           bool has_no_bmc);

}  // namespace qvhost
