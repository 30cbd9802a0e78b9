#include "fleet/print.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <ostream>
#include <stdexcept>

#include "fleet/schema.h"
#include "rows/row_printer.h"
#include "show/terminal.h"

namespace qvhost::fleet {

namespace {

// Digits of its own, so that both databases' numbers look alike.
std::string real_text(double number) {
    char digits[32];
    const auto* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    std::string text(static_cast<const char*>(digits), end);
    return text.find_first_not_of("-0123456789") == std::string::npos ? text + ".0" : text;
}

// Prints rows as they come.
class Printer {
public:
    Printer(const Printing& how, std::ostream& out) : how_(how), out_(out) {}

    void columns(const std::vector<std::string>& names) {
        texts_.resize(names.size());
        cells_.resize(names.size());
        printer_ = row_printer(out_, {how_.format, how_.raw, terminal_style(STDOUT_FILENO)}, names);
    }

    void row(const Row& row) {
        for (std::size_t i = 0; i < row.size(); ++i) set(cells_[i], texts_[i], row[i]);
        printer_->row(cells_);
    }

    void end() {
        if (printer_) printer_->end();
    }

private:
    static void set(Cell& cell, std::string& text, const TypedValue& value) {
        cell = {};
        if (const auto* number = std::get_if<std::int64_t>(&value)) {
            cell.kind = Cell::Kind::integer;
            text = std::to_string(*number);
        } else if (const auto* real = std::get_if<double>(&value)) {
            cell.kind = Cell::Kind::real;
            cell.real = *real;
            text = real_text(*real);
        } else if (const auto* told = std::get_if<std::string>(&value)) {
            cell.kind = Cell::Kind::text;
            text = *told;
        } else {
            text.clear();
        }
        cell.text = text;
    }

    const Printing& how_;
    std::ostream& out_;
    std::unique_ptr<RowPrinter> printer_;
    std::vector<std::string> texts_;
    std::vector<Cell> cells_;
};

bool is_relation(const std::string& name) {
    const auto is_it = [&](const auto& one) { return one.name == name; };
    return std::any_of(tables().begin(), tables().end(), is_it) ||
           std::any_of(views().begin(), views().end(), is_it);
}

}  // namespace

void print_query(Database& db, const std::string& sql, const Printing& how, std::ostream& out) {
    Printer printer(how, out);
    db.query(
        sql, [&](const auto& names) { printer.columns(names); },
        [&](const Row& row) { printer.row(row); });
    printer.end();
}

void print_relation(Database& db, const std::string& name, const Printing& how, std::ostream& out) {
    if (!is_relation(name))
        throw std::runtime_error("there is no table or view \"" + name +
                                 "\"; \"qvfleet export --help\" names them");
    std::size_t count = 0;
    db.query(
        "SELECT * FROM " + name + " LIMIT 0", [&](const auto& names) { count = names.size(); },
        [](const Row&) {});
    std::string order;
    for (std::size_t i = 1; i <= count; ++i)
        order += (i == 1 ? " ORDER BY " : ", ") + std::to_string(i) + " NULLS FIRST";
    print_query(db, "SELECT * FROM " + name + order, how, out);
}

void print_texts(const std::vector<std::string>& columns,
                 const std::vector<std::vector<std::string>>& rows, const Printing& how,
                 std::ostream& out) {
    Printer printer(how, out);
    printer.columns(columns);
    for (const auto& row : rows) printer.row({row.begin(), row.end()});
    printer.end();
}

}  // namespace qvhost::fleet
