#include "rows/csv_writer.h"

#include <algorithm>
#include <ostream>

#include "show/visible.h"

namespace qvhost {

namespace {

bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

// What begins a formula: = + - @ and U+FF1D, U+FF0B, U+FF0D, U+FF20.
constexpr std::string_view kSigns[] = {
    "=", "+", "-", "@", "\xef\xbc\x9d", "\xef\xbc\x8b", "\xef\xbc\x8d", "\xef\xbc\xa0"};

// What spreadsheets skip before it: the blanks, those of U+00A0 and U+3000 included, and quotes.
constexpr std::string_view kSkipped[] = {" ", "\xc2\xa0", "\xe3\x80\x80", "\"", "'"};

// Delimiters of other spreadsheets; a comma within a cell stands between quotes, and so needs nothing.
constexpr std::string_view kDelimiters = ";|\t\n\r";

template <class Texts>
std::size_t prefix_of(std::string_view text, const Texts& prefixes) {
    for (const std::string_view prefix : prefixes) {
        if (text.starts_with(prefix)) return prefix.size();
    }
    return 0;
}

bool is_delimiter(char c) { return kDelimiters.find(c) != std::string_view::npos; }

bool could_be_formula(std::string_view text) {
    if (!text.empty() && is_control(text.front())) return true;
    while (!text.empty()) {
        auto skipped = prefix_of(text, kSkipped);
        if (skipped == 0 && (is_delimiter(text.front()) || text.front() == ',')) skipped = 1;
        if (skipped == 0) break;
        text.remove_prefix(skipped);
    }
    return prefix_of(text, kSigns) > 0;
}

bool needs_quotes(std::string_view text) {
    return text.empty() || text.front() == ' ' || text.back() == ' ' ||
           std::any_of(text.begin(), text.end(), [](char c) {
               return c == ',' || c == '"' || is_delimiter(c) || is_control(c);
           });
}

// Without the line ends at its end, and blanks between and behind them: most tools end a value so.
std::string_view without_line_ends(std::string_view text) {
    const auto last = text.find_last_not_of(" \t\r\n");
    const auto begin = last == std::string_view::npos ? 0 : last + 1;
    return text.substr(0, text.find_first_of("\r\n", begin));
}

}  // namespace

std::string formula_free(std::string_view text) {
    std::string free = could_be_formula(text) ? "'" : "";
    bool begins_cell = false;  // in another spreadsheet, what comes next does
    while (!text.empty()) {
        if (begins_cell && prefix_of(text, kSigns) > 0) free += '\'';
        const auto skipped = prefix_of(text, kSkipped);
        begins_cell = is_delimiter(text.front()) || (begins_cell && skipped > 0);
        const auto size = std::max<std::size_t>(skipped, 1);
        free += text.substr(0, size);
        text.remove_prefix(size);
    }
    return free;
}

void CsvWriter::begin_field() {
    if (fields_++ == 0) return;
    out_ << ',';
    blank_ = false;
}

void CsvWriter::text(std::string_view text) {
    begin_field();
    blank_ = false;
    std::string changed;
    if (!raw_) text = changed = formula_free(without_line_ends(text));
    if (terminal_) text = changed = visible(text);
    if (!needs_quotes(text)) {
        out_ << text;
        return;
    }
    out_ << '"';
    for (auto quote = text.find('"'); quote != std::string_view::npos; quote = text.find('"')) {
        out_ << text.substr(0, quote + 1) << '"';
        text.remove_prefix(quote + 1);
    }
    out_ << text << '"';
}

void CsvWriter::number(std::string_view digits) {
    begin_field();
    blank_ = false;
    out_ << digits;
}

void CsvWriter::nothing() { begin_field(); }

void CsvWriter::end_row() {
    // An empty line would be no row at all.
    if (blank_ && fields_ > 0) out_ << "\"\"";
    out_ << "\r\n";
    fields_ = 0;
    blank_ = true;
}

}  // namespace qvhost
