// `explain`: all that is known of one finding.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Prints its rule, its evidence with the lines around it, since when it is there, and what people do about it.
// Without a finding it lists those that there are.
void explain_finding(const ExplainOptions& options);

}  // namespace qvhost
