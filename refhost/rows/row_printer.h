// Rows in the formats that people and programs read, printed as they come: those of a query, and those of tables.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "show/terminal.h"

namespace qvhost {

struct Cell {
    enum class Kind { null, integer, real, boolean, text, blob };
    Kind kind = Kind::null;
    std::string_view
        text;  // its bytes, of a number its digits, of a boolean 0 or 1; valid until the next row
    double real = 0;
};

class RowPrinter {
public:
    virtual ~RowPrinter() = default;
    virtual void row(const std::vector<Cell>& cells) = 0;
    virtual void end() {}
};

// The formats, the default first.
std::vector<std::string> row_formats();

// Those for programs: json is one array, jsonl an object a line.
bool is_json(const std::string& format);

struct RowStyle {
    std::string format;
    bool raw = false;  // in csv: values as they were filed, with their line ends
    TerminalStyle terminal;
};

// Prints the head, if the format has one, at once or with the first rows. Blobs are printed as SQL
// writes them, X'0AFF'.
std::unique_ptr<RowPrinter> row_printer(std::ostream& out, const RowStyle& style,
                                        const std::vector<std::string>& columns);

// Objects in one array, or one a line, of rows that may have other columns from table to table.
class ObjectWriter {
public:
    ObjectWriter(std::ostream& out, bool lines) : out_(out), lines_(lines) {}

    // The columns of the rows that follow. Columns of the same name are told apart: "a", "a:2".
    void columns(const std::vector<std::string>& names);
    void row(const std::vector<Cell>& cells);
    void end();

private:
    std::ostream& out_;
    bool lines_;
    std::vector<std::string> keys_;
    std::uint64_t rows_ = 0;
};

}  // namespace qvhost
