#include "qvhost/present/query_rows.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>
#include <optional>
#include <ostream>
#include <set>
#include <utility>

#include "qvhost/present/export_csv.h"
#include "report/json_text.h"
#include "show/text_table.h"
#include "show/visible.h"

namespace qvhost {

namespace {

using nlohmann::ordered_json;

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

// Widths that give each column what it needs, and share out what is left where that is too much.
std::vector<unsigned> fair_widths(const std::vector<std::size_t>& needs, std::size_t room) {
    std::vector<std::size_t> order(needs.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return needs[a] < needs[b]; });
    std::vector<unsigned> widths(needs.size());
    std::size_t waiting = needs.size();
    for (const auto column : order) {
        const auto width = std::min(needs[column], room / waiting--);
        widths[column] = static_cast<unsigned>(width);
        room -= width;
    }
    return widths;
}

// The first rows are held back to see how wide their columns are; the rest is printed as it comes.
class TablePrinter : public RowPrinter {
public:
    TablePrinter(std::ostream& out, const std::vector<std::string>& columns,
                 const TerminalStyle& style)
        : out_(out), titles_(columns), style_(style) {}

    void row(const std::vector<Cell>& cells) override {
        std::vector<std::string> texts;
        for (const auto& cell : cells) {
            const auto text =
                cell.kind == Cell::Kind::blob ? blob_literal(cell.text) : std::string(cell.text);
            // A column of whole lines keeps their indentation.
            texts.push_back(cells.size() > 1 ? trimmed(text) : text);
            held_bytes_ += text.size();
        }
        if (table_) {
            table_->print_row(out_, texts);
            return;
        }
        held_.push_back(std::move(texts));
        constexpr std::size_t kMaxRows = 1000;
        constexpr std::size_t kMaxBytes = 1'000'000;
        if (held_.size() >= kMaxRows || held_bytes_ >= kMaxBytes) print_held();
    }

    void end() override {
        if (!table_) print_held();
    }

private:
    void print_held() {
        std::vector<std::size_t> needs;
        for (std::size_t i = 0; i < titles_.size(); ++i) {
            needs.push_back(std::max<std::size_t>(5, display_width(visible(titles_[i]))));
            for (const auto& row : held_) {
                for (const auto& line : wrapped(visible(row[i]), style_.width))
                    needs[i] = std::max(needs[i], display_width(line));
            }
        }
        const auto gaps = gap_for(needs.size()) * (needs.size() - 1);
        const auto room = style_.width > gaps ? style_.width - gaps : 0;
        const auto widths = fair_widths(needs, room);
        std::vector<TextColumn> columns;
        for (std::size_t i = 0; i < titles_.size(); ++i) columns.push_back({titles_[i], widths[i]});
        // The table takes no more of the terminal than it needs.
        auto style = style_;
        const auto needed = std::accumulate(needs.begin(), needs.end(), gaps);
        if (needed < style.width) style.width = static_cast<unsigned>(needed);
        table_.emplace(std::move(columns), style);
        table_->print_header(out_);
        for (const auto& row : held_) table_->print_row(out_, row);
        held_.clear();
    }

    std::ostream& out_;
    std::vector<std::string> titles_;
    TerminalStyle style_;
    std::vector<std::vector<std::string>> held_;
    std::size_t held_bytes_ = 0;
    std::optional<TextTable> table_;
};

class CsvPrinter : public RowPrinter {
public:
    CsvPrinter(std::ostream& out, const std::vector<std::string>& columns, bool raw, bool terminal)
        : csv_(out, raw, terminal) {
        for (const auto& column : columns) csv_.text(column);
        csv_.end_row();
    }

    void row(const std::vector<Cell>& cells) override {
        for (const auto& cell : cells) {
            switch (cell.kind) {
                case Cell::Kind::null: csv_.nothing(); break;
                case Cell::Kind::integer:
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

// An array of objects, one a line. Columns of the same name are told apart: "a", "a:2".
class JsonPrinter : public RowPrinter {
public:
    JsonPrinter(std::ostream& out, const std::vector<std::string>& columns) : out_(out) {
        std::set<std::string> taken;
        for (const auto& column : columns) {
            auto name = column;
            for (int i = 2; !taken.insert(name).second; ++i)
                name = column + ":" + std::to_string(i);
            keys_.push_back(json_line(name));
        }
        out_ << '[';
    }

    void row(const std::vector<Cell>& cells) override {
        out_ << row_separator_ << '{';
        row_separator_ = ",\n";
        const char* separator = "";
        for (std::size_t i = 0; i < cells.size(); ++i) {
            out_ << separator << keys_[i] << ':' << value_of(cells[i]);
            separator = ",";
        }
        out_ << '}';
    }

    void end() override { out_ << "\n]\n"; }

private:
    static std::string value_of(const Cell& cell) {
        switch (cell.kind) {
            case Cell::Kind::null: return "null";
            case Cell::Kind::integer: return std::string(cell.text);
            case Cell::Kind::real: return json_line(cell.real);
            case Cell::Kind::text: return json_line(cell.text);
            case Cell::Kind::blob: return json_line(blob_literal(cell.text));
        }
        return "null";
    }

    std::ostream& out_;
    std::vector<std::string> keys_;
    const char* row_separator_ = "\n";
};

}  // namespace

std::vector<std::string> query_formats() { return {"table", "csv", "json"}; }

std::unique_ptr<RowPrinter> row_printer(std::ostream& out, const QueryOptions& options,
                                        const std::vector<std::string>& columns,
                                        const TerminalStyle& style) {
    if (options.format == "csv")
        return std::make_unique<CsvPrinter>(out, columns, options.raw, style.terminal);
    if (options.format == "json") return std::make_unique<JsonPrinter>(out, columns);
    return std::make_unique<TablePrinter>(out, columns, style);
}

}  // namespace qvhost
