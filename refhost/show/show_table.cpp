#include "show/show_table.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "show/headers.h"
#include "show/link.h"
#include "show/text_table.h"
#include "show/visible.h"

namespace qvhost {

namespace {

std::string value_text(const Record& record, const std::string& id) {
    for (const auto& property : record.properties) {
        if (property.id != id) continue;
        if (const auto* text = std::get_if<std::string>(&property.value))
            return linked_capture(*text).value_or(*text);
        return std::to_string(std::get<int>(property.value));
    }
    return "";
}

void show_rows(std::ostream& out, const Store& store, const TableInfo& table,
               const std::vector<Header>& headers, const TerminalStyle& style, TableForm form) {
    std::vector<std::string> titles;
    for (const auto& header : headers) titles.push_back(header.label);
    TextTable text(out, titles, style, form);
    store.each_record(table.id, [&](const Record& record) {
        std::vector<std::string> cells;
        for (const auto& header : headers) cells.push_back(value_text(record, header.id));
        text.add(std::move(cells));
    });
    text.end();
}

// Records beside each other, as many as the layout asks for and the terminal holds.
class Columns {
public:
    Columns(std::ostream& out, const std::vector<Header>& headers, std::size_t most,
            const TerminalStyle& style)
        : out_(out), headers_(headers), most_(std::max<std::size_t>(1, most)), style_(style) {
        for (const auto& header : headers)
            labels_ = std::max(labels_, display_width(visible(header.label)));
    }

    void add(const Record& record) {
        std::vector<std::string> cells;
        std::size_t width = 0;
        bool has_lines = false;
        for (const auto& header : headers_) {
            cells.push_back(visible(trimmed(value_text(record, header.id))));
            width = std::max(width, display_width(cells.back()));
            has_lines = has_lines || cells.back().find('\n') != std::string::npos;
        }
        if (has_lines || group_has_lines_ || group_.size() == most_ || !has_room_for(width))
            print();
        group_.push_back(std::move(cells));
        widths_.push_back(width);
        group_has_lines_ = has_lines;
    }

    void print() {
        if (group_.empty()) return;
        if (!first_) out_ << '\n';
        first_ = false;
        std::vector<std::pair<std::string, std::string>> lines;
        for (std::size_t i = 0; i < headers_.size(); ++i) {
            std::string text;
            for (std::size_t place = 0; place < group_.size(); ++place) {
                const auto& cell = group_[place][i];
                text += cell;
                if (place + 1 < group_.size())
                    text.append(widths_[place] + kGap - display_width(cell), ' ');
            }
            lines.emplace_back(visible(headers_[i].label),
                               text.substr(0, text.find_last_not_of(' ') + 1));
        }
        print_labelled(out_, lines, style_);
        group_.clear();
        widths_.clear();
    }

private:
    static constexpr std::size_t kGap = 2;

    // Without a terminal every record is a block of its own.
    bool has_room_for(std::size_t width) const {
        std::size_t sum = labels_ + kGap + width;
        for (const auto one : widths_) sum += one + kGap;
        return sum <= style_.width;
    }

    std::ostream& out_;
    const std::vector<Header>& headers_;
    std::size_t most_;
    TerminalStyle style_;
    std::size_t labels_ = 0;
    std::vector<std::vector<std::string>> group_;  // the cells of records, by header
    std::vector<std::size_t> widths_;              // of each
    bool group_has_lines_ = false;                 // below one another, in a cell
    bool first_ = true;
};

}  // namespace

void show_table(std::ostream& out, const Store& store, const ModuleInfo& module,
                const TableInfo& table, const TerminalStyle& style, TableForm form) {
    const auto count =
        std::to_string(table.records) + (table.records == 1 ? " record" : " records");
    auto title = visible(table.id);
    if (!table.title.empty()) title += ": " + one_line(table.title);
    title += " (" + visible(module.display) + "), " + (table.records == 0 ? "no records" : count);
    if (!table.reason.empty())
        title += (table.records == 0 ? ": " : ", partial: ") + one_line(table.reason);
    print_title(out, title, style);
    if (table.records == 0) return;

    const auto headers = headers_of(store, table);
    const auto* layout = std::get_if<ColumnLayout>(&table.layout);
    if (!layout || form == TableForm::blocks)
        return show_rows(out, store, table, headers, style, form);
    Columns columns(out, headers, layout->count, style);
    store.each_record(table.id, [&](const Record& record) { columns.add(record); });
    columns.print();
}

void print_title(std::ostream& out, const std::string& title, const TerminalStyle& style) {
    const auto lines = style.width == 0 ? std::vector{title} : wrapped(title, style.width);
    for (const auto& line : lines) out << bold(line, style) << '\n';
}

}  // namespace qvhost
