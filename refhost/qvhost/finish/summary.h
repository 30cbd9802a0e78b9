// What a collection prints when it is done.
#pragma once

#include <iosfwd>

#include "qvhost/base/log_dir.h"
#include "show/terminal.h"
#include "store/store.h"

namespace qvhost {

// Prints health and findings, then all tables with their numbers of records, why tables are empty or partial,
// and where the report is.
void print_summary(std::ostream& out, const Store& store, const LogDir& dir,
                   const TerminalStyle& style);

}  // namespace qvhost
