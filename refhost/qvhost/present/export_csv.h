// Comma-separated values as RFC 4180 has them.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string_view>

namespace qvhost {

class CsvWriter {
public:
    // Spreadsheets take a text that begins with = + - @ or a control character for a formula; it
    // gets an apostrophe before it. `raw`: it does not.
    CsvWriter(std::ostream& out, bool raw) : out_(out), raw_(raw) {}

    // Fields of a row, from the left. Whatever bytes a text has are written; an empty one is "",
    // which tells it from nothing.
    void text(std::string_view text);
    void number(std::string_view digits);
    void nothing();
    void end_row();

private:
    void begin_field();

    std::ostream& out_;
    bool raw_;
    std::size_t fields_ = 0;
    bool blank_ = true;  // nothing is written of this row yet
};

}  // namespace qvhost
