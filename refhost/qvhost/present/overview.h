// A report at a glance: the machine, its health, the findings, and what tables there are.
#pragma once

#include <iosfwd>

#include "show/terminal.h"
#include "store/store.h"

namespace qvhost {

void show_overview(std::ostream& out, const Store& store, const TerminalStyle& style);

}  // namespace qvhost
