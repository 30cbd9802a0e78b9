// A collected table on a terminal, laid out as its module asks.
#pragma once

#include <iosfwd>
#include <string>

#include "show/terminal.h"
#include "store/store.h"

namespace qvhost {

// Row layouts are a table with a header row, their widths in proportion; column layouts a header
// column with as many records beside each other as the layout says. Labels are the display texts;
// properties that no header names come last.
void show_table(std::ostream& out, const Store& store, const ModuleInfo& module,
                const TableInfo& table, const TerminalStyle& style);

}  // namespace qvhost
