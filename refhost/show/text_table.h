// A table of text for people: aligned columns where its rows fit the terminal, a block of "title  cell" lines for
// each row where they do not. No word is cut to fit a column.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "show/terminal.h"

namespace qvhost {

enum class TableForm {
    fitting,  // columns if the rows fit, else blocks
    blocks,
};

// Rows come one by one. The first ones are held back to see how wide their columns are; the rest is printed as it
// comes.
class TextTable {
public:
    TextTable(std::ostream& out, std::vector<std::string> titles, const TerminalStyle& style,
              TableForm form = TableForm::fitting);

    // Cells are any captured text; missing ones are empty.
    void add(std::vector<std::string> cells);

    // After the last row.
    void end();

private:
    using Row = std::vector<std::string>;

    void print_held();
    bool fits(const std::vector<std::size_t>& needs, const std::vector<std::size_t>& words);
    void print_header();
    void print(const Row& row);
    void print_lines(const std::vector<std::vector<std::string>>& cells);
    void print_block(const Row& row);
    std::vector<std::string> lines_in(const std::string& cell, std::size_t width) const;

    std::ostream& out_;
    std::vector<std::string> titles_;
    TerminalStyle style_;
    TableForm form_;
    std::vector<Row> held_;
    std::size_t held_bytes_ = 0;
    bool decided_ = false;
    std::vector<std::size_t> widths_;  // of the columns; none: blocks
    std::size_t blocks_ = 0;
};

// Prints a table that is known as a whole.
void print_table(std::ostream& out, const std::vector<std::string>& titles,
                 const std::vector<std::vector<std::string>>& rows, const TerminalStyle& style);

// "Label  text" lines, the labels filled up to one width. A text that does not fit goes on below its own
// beginning.
void print_labelled(std::ostream& out,
                    const std::vector<std::pair<std::string, std::string>>& lines,
                    const TerminalStyle& style);

}  // namespace qvhost
