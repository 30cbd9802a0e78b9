// The rows that a query gives, printed as they come.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qvhost/base/options.h"
#include "show/terminal.h"

namespace qvhost {

struct Cell {
    enum class Kind { null, integer, real, text, blob };
    Kind kind = Kind::null;
    std::string_view text;  // its bytes, of a number its digits; valid until the next row
    double real = 0;
};

class RowPrinter {
public:
    virtual ~RowPrinter() = default;
    virtual void row(const std::vector<Cell>& cells) = 0;
    virtual void end() {}
};

// The formats, the default first.
std::vector<std::string> query_formats();

// Prints the head, if the format has one, at once or with the first rows. Blobs are printed as SQL
// writes them, X'0AFF'.
std::unique_ptr<RowPrinter> row_printer(std::ostream& out, const QueryOptions& options,
                                        const std::vector<std::string>& columns,
                                        const TerminalStyle& style);

}  // namespace qvhost
