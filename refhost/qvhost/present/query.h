// `qvhost query`: SQL on a report.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Prints what one SQL statement gives on a report. It can read the report and do nothing else.
// Throws std::runtime_error saying what is wrong with the statement.
void query_report(const QueryOptions& options);

}  // namespace qvhost
