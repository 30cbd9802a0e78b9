// Comma-separated values as RFC 4180 has them.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace qvhost {

// The text with an apostrophe before it if a spreadsheet would take it for a formula: if it begins with
// = + - @, their full-width forms or a control character, also behind blanks, quotes and delimiters. Where such a
// sign stands behind a line end or a delimiter that other spreadsheets use (; | tab), it gets one as well, since
// they would begin a cell there.
std::string formula_free(std::string_view text);

class CsvWriter {
public:
    // Spreadsheets take some texts for formulas; they get an apostrophe (formula_free), unless `raw`. On a
    // terminal hidden characters are shown and not sent.
    CsvWriter(std::ostream& out, bool raw, bool terminal)
        : out_(out), raw_(raw), terminal_(terminal) {}

    // Fields of a row, from the left. Whatever bytes a text has are written to a file, but for line ends at its end, so
    // that a record is one line where its values are. An empty text is "", which tells it from nothing.
    void text(std::string_view text);
    void number(std::string_view digits);
    void nothing();
    void end_row();

private:
    void begin_field();

    std::ostream& out_;
    bool raw_;
    bool terminal_;
    std::size_t fields_ = 0;
    bool blank_ = true;  // nothing is written of this row yet
};

}  // namespace qvhost
