// `qvhost show`: tables of a report in the terminal.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Shows tables of a report on standard output; without names all that have records, and the empty
// ones with their reasons.
void show_report(const ShowOptions& options);

}  // namespace qvhost
