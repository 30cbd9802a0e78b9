#include "rows/row_printer.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <set>

#include "report/json_text.h"
#include "rows/csv_writer.h"
#include "show/text_table.h"

namespace qvhost {

namespace {

std::string blob_literal(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "X'";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text + "'";
}

// For people.
std::string text_of(const Cell& cell) {
    if (cell.kind == Cell::Kind::blob) return blob_literal(cell.text);
    if (cell.kind == Cell::Kind::boolean) return cell.text == "1" ? "yes" : "no";
    return std::string(cell.text);
}

class TablePrinter : public RowPrinter {
public:
    TablePrinter(std::ostream& out, const std::vector<std::string>& columns,
                 const TerminalStyle& style, TableForm form)
        : table_(out, columns, style, form) {}

    void row(const std::vector<Cell>& cells) override {
        std::vector<std::string> texts;
        for (const auto& cell : cells) texts.push_back(text_of(cell));
        table_.add(std::move(texts));
    }

    void end() override { table_.end(); }

private:
    TextTable table_;
};

class CsvPrinter : public RowPrinter {
public:
    CsvPrinter(std::ostream& out, const std::vector<std::string>& columns, const RowStyle& style)
        : csv_(out, style.raw, style.terminal.terminal) {
        for (const auto& column : columns) csv_.text(column);
        csv_.end_row();
    }

    void row(const std::vector<Cell>& cells) override {
        for (const auto& cell : cells) {
            switch (cell.kind) {
                case Cell::Kind::null: csv_.nothing(); break;
                case Cell::Kind::integer:
                case Cell::Kind::boolean:
                case Cell::Kind::real: csv_.number(cell.text); break;
                case Cell::Kind::text: csv_.text(cell.text); break;
                case Cell::Kind::blob: csv_.text(blob_literal(cell.text)); break;
            }
        }
        csv_.end_row();
    }

private:
    CsvWriter csv_;
};

class JsonPrinter : public RowPrinter {
public:
    JsonPrinter(std::ostream& out, const std::vector<std::string>& columns, bool lines)
        : objects_(out, lines) {
        objects_.columns(columns);
    }

    void row(const std::vector<Cell>& cells) override { objects_.row(cells); }
    void end() override { objects_.end(); }

private:
    ObjectWriter objects_;
};

std::string json_of(const Cell& cell) {
    switch (cell.kind) {
        case Cell::Kind::null: return "null";
        case Cell::Kind::integer: return std::string(cell.text);
        case Cell::Kind::real: return json_line(cell.real);
        case Cell::Kind::boolean: return cell.text == "1" ? "true" : "false";
        case Cell::Kind::text: return json_line(cell.text);
        case Cell::Kind::blob: return json_line(blob_literal(cell.text));
    }
    return "null";
}

}  // namespace

void ObjectWriter::columns(const std::vector<std::string>& names) {
    keys_.clear();
    std::set<std::string> taken;
    for (const auto& one : names) {
        auto name = one;
        for (int i = 2; !taken.insert(name).second; ++i) name = one + ":" + std::to_string(i);
        keys_.push_back(json_line(name));
    }
}

void ObjectWriter::row(const std::vector<Cell>& cells) {
    if (!lines_) out_ << (rows_ == 0 ? "[\n" : ",\n");
    ++rows_;
    out_ << '{';
    for (std::size_t i = 0; i < cells.size(); ++i)
        out_ << (i == 0 ? "" : ",") << keys_[i] << ':' << json_of(cells[i]);
    out_ << '}';
    if (lines_) out_ << '\n';
}

void ObjectWriter::end() {
    if (!lines_) out_ << (rows_ == 0 ? "[\n]\n" : "\n]\n");
}

std::vector<std::string> row_formats() { return {"table", "blocks", "csv", "json", "jsonl"}; }

bool is_json(const std::string& format) { return format == "json" || format == "jsonl"; }

std::unique_ptr<RowPrinter> row_printer(std::ostream& out, const RowStyle& style,
                                        const std::vector<std::string>& columns) {
    if (style.format == "csv") return std::make_unique<CsvPrinter>(out, columns, style);
    if (is_json(style.format))
        return std::make_unique<JsonPrinter>(out, columns, style.format == "jsonl");
    return std::make_unique<TablePrinter>(
        out, columns, style.terminal,
        style.format == "blocks" ? TableForm::blocks : TableForm::fitting);
}

}  // namespace qvhost
