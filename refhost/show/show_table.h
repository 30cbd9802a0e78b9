// A collected table on a terminal, laid out as its module asks.
#pragma once

#include <iosfwd>
#include <string>

#include "show/terminal.h"
#include "show/text_table.h"
#include "store/store.h"

namespace qvhost {

// Row layouts are a table with a header row; column layouts a header column with as many records beside each other
// as the layout says and the terminal holds. Labels are the display texts; properties that no header names come
// last. Links to captures are shown as the captures' names.
void show_table(std::ostream& out, const Store& store, const ModuleInfo& module,
                const TableInfo& table, const TerminalStyle& style,
                TableForm form = TableForm::fitting);

// A line above a table, bold where the terminal shows that.
void print_title(std::ostream& out, const std::string& title, const TerminalStyle& style);

}  // namespace qvhost
