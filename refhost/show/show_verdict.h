// Health and findings on a terminal, the worst first, each with the place that says so.
#pragma once

#include <iosfwd>

#include "findings/finding.h"
#include "show/terminal.h"

namespace qvhost {

// Nothing where the verdict is empty: an older program's report.
void show_verdict(std::ostream& out, const findings::Verdict& verdict, const TerminalStyle& style);

}  // namespace qvhost
