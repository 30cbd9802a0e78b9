// A table of text for a terminal: a header row, and rows whose long cells are wrapped.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "show/terminal.h"

namespace qvhost {

struct TextColumn {
    std::string title;
    unsigned share = 1;  // of the terminal's width, in proportion to the other columns'
};

// The blanks between columns: one is enough for the eye where there are many.
std::size_t gap_for(std::size_t columns);

class TextTable {
public:
    TextTable(std::vector<TextColumn> columns, TerminalStyle style);

    // Whether the terminal is wide enough for columns that can be read. Where it is not, every row
    // is a block of "title: cell" lines.
    bool fits() const { return !widths_.empty(); }

    void print_header(std::ostream& out) const;

    // Cells are any captured text. Missing cells are empty.
    void print_row(std::ostream& out, const std::vector<std::string>& cells) const;

private:
    std::vector<TextColumn> columns_;
    std::vector<std::size_t> widths_;  // none if the table does not fit
    TerminalStyle style_;
};

// Shares that suit the texts of a small table that is known as a whole.
std::vector<TextColumn> columns_for(const std::vector<std::string>& titles,
                                    const std::vector<std::vector<std::string>>& rows,
                                    const TerminalStyle& style);

// Prints such a table.
void print_table(std::ostream& out, const std::vector<std::string>& titles,
                 const std::vector<std::vector<std::string>>& rows, const TerminalStyle& style);

}  // namespace qvhost
