#include "show/text_table.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <utility>

#include "show/visible.h"

namespace qvhost {

namespace {

constexpr std::size_t kLeast = 5;  // a narrower column cannot be read

// The columns' widths; nothing if there is no room.
std::vector<std::size_t> share_out(const std::vector<TextColumn>& columns, std::size_t width) {
    const std::size_t gaps = columns.empty() ? 0 : gap_for(columns.size()) * (columns.size() - 1);
    if (columns.empty() || width < gaps + kLeast * columns.size()) return {};

    const std::size_t room = width - gaps;
    const auto shares =
        std::accumulate(columns.begin(), columns.end(), std::size_t{0},
                        [](std::size_t sum, const TextColumn& c) { return sum + c.share; });
    std::vector<std::size_t> widths;
    for (const auto& column : columns)
        widths.push_back(std::max(kLeast, shares == 0 ? kLeast : room * column.share / shares));

    // Narrow columns were widened to the least width; take that from the widest column.
    auto total = std::accumulate(widths.begin(), widths.end(), std::size_t{0});
    for (; total > room; --total) --*std::max_element(widths.begin(), widths.end());
    return widths;
}

}  // namespace

std::size_t gap_for(std::size_t columns) { return columns > 6 ? 1 : 2; }

TextTable::TextTable(std::vector<TextColumn> columns, TerminalStyle style)
    : columns_(std::move(columns)), widths_(share_out(columns_, style.width)), style_(style) {}

void TextTable::print_header(std::ostream& out) const {
    if (!fits()) return;
    std::vector<std::string> titles;
    std::vector<std::string> rules;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        titles.push_back(columns_[i].title);
        rules.emplace_back(widths_[i], '-');
    }
    print_row(out, titles);
    print_row(out, rules);
}

void TextTable::print_row(std::ostream& out, const std::vector<std::string>& cells) const {
    const auto cell = [&](std::size_t i) {
        return i < cells.size() ? visible(cells[i]) : std::string();
    };
    if (!fits()) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const auto text = visible(columns_[i].title) + ": " + cell(i);
            for (const auto& line : wrapped(text, style_.width)) out << line << '\n';
        }
        out << '\n';
        return;
    }

    std::vector<std::vector<std::string>> lines;
    std::size_t height = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        lines.push_back(wrapped(cell(i), widths_[i]));
        height = std::max(height, lines.back().size());
    }
    for (std::size_t row = 0; row < height; ++row) {
        std::string line;
        std::size_t end_before = 0;  // the column behind the last printed text
        std::size_t start = 0;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (row < lines[i].size() && !lines[i][row].empty()) {
                line.append(start - end_before, ' ').append(lines[i][row]);
                end_before = start + display_width(lines[i][row]);
            }
            start += widths_[i] + gap_for(columns_.size());
        }
        out << line << '\n';
    }
}

std::vector<TextColumn> columns_for(const std::vector<std::string>& titles,
                                    const std::vector<std::vector<std::string>>& rows,
                                    const TerminalStyle& style) {
    std::vector<TextColumn> columns;
    std::size_t total = 0;
    for (std::size_t i = 0; i < titles.size(); ++i) {
        std::size_t widest = std::max(kLeast, display_width(titles[i]));
        for (const auto& row : rows) {
            for (const auto& line : wrapped(visible(row[i]), 10'000))
                widest = std::max(widest, display_width(line));
        }
        columns.push_back({titles[i], static_cast<unsigned>(widest)});
        total += widest + (i > 0 ? gap_for(titles.size()) : 0);
    }
    // The last column takes the rest, or is cut by what is missing.
    if (!columns.empty()) {
        auto& last = columns.back().share;
        const auto others = total - last;
        last = others + kLeast < style.width ? static_cast<unsigned>(style.width - others) : kLeast;
    }
    return columns;
}

void print_table(std::ostream& out, const std::vector<std::string>& titles,
                 const std::vector<std::vector<std::string>>& rows, const TerminalStyle& style) {
    const TextTable table(columns_for(titles, rows, style), style);
    table.print_header(out);
    for (const auto& row : rows) table.print_row(out, row);
}

}  // namespace qvhost
