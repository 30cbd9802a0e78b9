#include "qvhost/present/export_csv.h"

#include <algorithm>
#include <ostream>

namespace qvhost {

namespace {

bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

bool could_be_formula(std::string_view text) {
    return !text.empty() && (is_control(text.front()) ||
                             std::string_view("=+-@").find(text.front()) != std::string_view::npos);
}

bool needs_quotes(std::string_view text) {
    return text.empty() || text.front() == ' ' || text.back() == ' ' ||
           std::any_of(text.begin(), text.end(),
                       [](char c) { return c == ',' || c == '"' || is_control(c); });
}

}  // namespace

void CsvWriter::begin_field() {
    if (fields_++ == 0) return;
    out_ << ',';
    blank_ = false;
}

void CsvWriter::text(std::string_view text) {
    begin_field();
    blank_ = false;
    const char* const guard = !raw_ && could_be_formula(text) ? "'" : "";
    if (!needs_quotes(text)) {
        out_ << guard << text;
        return;
    }
    out_ << '"' << guard;
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
