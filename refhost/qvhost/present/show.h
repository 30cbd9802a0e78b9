// `qvhost show`: tables of a report in the terminal.
#pragma once

#include <string>

#include "qvhost/base/options.h"

namespace qvhost {

// Shows tables of a report on standard output; without names what the report is about: health, findings, and what
// tables there are.
void show_report(const ShowOptions& options);

// Why these options do not go together; empty: they do.
std::string show_misuse(const ShowOptions& options);

}  // namespace qvhost
