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
    // Values are made fit for a spreadsheet: line ends at their end go, and a text that would be taken for a formula
    // gets an apostrophe (formula_free). `raw` leaves them as they were filed. On a terminal hidden characters are
    // shown and not sent.
    CsvWriter(std::ostream& out, bool raw, bool terminal)
        : out_(out), raw_(raw), terminal_(terminal) {}

    // Fields of a row, from the left. An empty text is "", which tells it from nothing.
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
