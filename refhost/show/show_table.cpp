#include "show/show_table.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "show/headers.h"
#include "show/text_table.h"
#include "show/visible.h"

namespace qvhost {

namespace {

std::string value_text(const Record& record, const std::string& id) {
    for (const auto& property : record.properties) {
        if (property.id != id) continue;
        if (const auto* text = std::get_if<std::string>(&property.value)) return *text;
        return std::to_string(std::get<int>(property.value));
    }
    return "";
}

void show_rows(std::ostream& out, const Store& store, const TableInfo& table,
               const std::vector<Header>& headers, const TerminalStyle& style) {
    std::vector<TextColumn> columns;
    for (const auto& header : headers) columns.push_back({header.label, header.width});
    const TextTable text(columns, style);
    text.print_header(out);
    store.each_record(table.id, [&](const Record& record) {
        std::vector<std::string> cells;
        for (const auto& header : headers) cells.push_back(value_text(record, header.id));
        // A table of whole lines keeps their indentation.
        if (cells.size() > 1) std::transform(cells.begin(), cells.end(), cells.begin(), trimmed);
        text.print_row(out, cells);
    });
}

void show_columns(std::ostream& out, const Store& store, const TableInfo& table,
                  const ColumnLayout& layout, const std::vector<Header>& headers,
                  const TerminalStyle& style) {
    // No more than can be read beside each other, whatever the layout asks.
    const std::size_t beside = std::clamp(layout.count, 1u, std::max(1u, style.width / 10));
    // Percent. Layouts ask for as little as 10, which would cut labels into syllables.
    std::size_t longest = 0;
    for (const auto& header : headers) longest = std::max(longest, display_width(header.label));
    const auto for_labels = static_cast<unsigned>(100 * (longest + 1) / std::max(1u, style.width));
    const unsigned label_share = std::clamp(std::max(layout.width, for_labels), 10u, 40u);
    std::vector<TextColumn> columns{
        {"", label_share}
    };
    for (std::size_t i = 0; i < beside; ++i)
        columns.push_back({"", (100 - label_share) / static_cast<unsigned>(beside)});
    const TextTable text(columns, style);

    std::vector<std::vector<std::string>> values;  // of up to `beside` records, by header
    bool first_group = true;
    const auto print_group = [&] {
        if (values.empty()) return;
        if (!first_group) out << '\n';
        first_group = false;
        for (std::size_t i = 0; i < headers.size(); ++i) {
            std::vector<std::string> cells{headers[i].label};
            for (const auto& record : values) cells.push_back(record[i]);
            text.print_row(out, cells);
        }
        values.clear();
    };
    store.each_record(table.id, [&](const Record& record) {
        auto& cells = values.emplace_back();
        for (const auto& header : headers) cells.push_back(trimmed(value_text(record, header.id)));
        if (values.size() == beside) print_group();
    });
    print_group();
}

}  // namespace

void show_table(std::ostream& out, const Store& store, const ModuleInfo& module,
                const TableInfo& table, const TerminalStyle& style) {
    const auto count =
        std::to_string(table.records) + (table.records == 1 ? " record" : " records");
    auto title = visible(table.id);
    if (!table.title.empty()) title += ": " + one_line(table.title);
    title += " (" + visible(module.display) + "), " + (table.records == 0 ? "no records" : count);
    if (!table.reason.empty())
        title += (table.records == 0 ? ": " : ", partial: ") + visible(table.reason);
    for (const auto& line : wrapped(title, style.width)) out << bold(line, style) << '\n';
    if (table.records == 0) return;

    const auto headers = headers_of(store, table);
    if (const auto* columns = std::get_if<ColumnLayout>(&table.layout)) {
        show_columns(out, store, table, *columns, headers, style);
    } else {
        show_rows(out, store, table, headers, style);
    }
}

}  // namespace qvhost
