#include "show/text_table.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <utility>

#include "show/visible.h"

namespace qvhost {

namespace {

// How many rows, or bytes of them, are held back.
constexpr std::size_t kMostRows = 10'000;
constexpr std::size_t kMostBytes = 4'000'000;

constexpr std::size_t kLeastTitle = 5;
constexpr std::size_t kRule = 40;  // above a block

// A longer word may be broken: its column is wide enough to be read.
constexpr std::size_t kLongWord = 30;

// One blank between columns is enough for the eye where there are many.
std::size_t gap_for(std::size_t columns) { return columns > 6 ? 1 : 2; }

std::size_t sum(const std::vector<std::size_t>& sizes) {
    return std::accumulate(sizes.begin(), sizes.end(), std::size_t{0});
}

std::vector<std::string_view> split_at(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const auto end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

std::size_t widest_line(std::string_view text) {
    std::size_t widest = 0;
    for (const auto line : split_at(text, '\n')) widest = std::max(widest, display_width(line));
    return widest;
}

std::size_t widest_word(std::string_view text) {
    std::size_t widest = 0;
    for (const auto line : split_at(text, '\n')) {
        for (const auto word : split_at(line, ' ')) widest = std::max(widest, display_width(word));
    }
    return widest;
}

// Each column gets its least width, and what is left goes to those that need more, the smallest needs first.
std::vector<std::size_t> fair_widths(const std::vector<std::size_t>& least,
                                     const std::vector<std::size_t>& needs, std::size_t room) {
    auto widths = least;
    auto left = room - sum(least);
    std::vector<std::size_t> order(needs.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::pair(needs[a] - least[a], a) < std::pair(needs[b] - least[b], b);
    });
    std::size_t waiting = order.size();
    for (const auto column : order) {
        const auto more = std::min(needs[column] - least[column], left / waiting--);
        widths[column] += more;
        left -= more;
    }
    return widths;
}

// Several lines as one, for programs that read line by line.
std::string as_one_line(const std::string& text) {
    std::string line;
    for (const auto part : split_at(text, '\n')) {
        const auto words = trimmed(part);
        if (!words.empty()) line += (line.empty() ? "" : " | ") + words;
    }
    return line;
}

}  // namespace

TextTable::TextTable(std::ostream& out, std::vector<std::string> titles, const TerminalStyle& style,
                     TableForm form)
    : out_(out), titles_(std::move(titles)), style_(style), form_(form) {
    for (auto& title : titles_) title = as_one_line(visible(title));
}

void TextTable::add(std::vector<std::string> cells) {
    cells.resize(titles_.size());
    for (auto& cell : cells) {
        // A column of whole lines keeps their indentation.
        cell = visible(cells.size() > 1 ? trimmed(cell) : cell);
        if (style_.width == 0 && cell.find('\n') != std::string::npos) cell = as_one_line(cell);
        held_bytes_ += cell.size();
    }
    if (decided_) {
        print(cells);
        return;
    }
    held_.push_back(std::move(cells));
    if (held_.size() >= kMostRows || held_bytes_ >= kMostBytes) print_held();
}

void TextTable::end() {
    if (!decided_) print_held();
}

void TextTable::print_held() {
    decided_ = true;
    std::vector<std::size_t> needs;
    std::vector<std::size_t> words;
    for (std::size_t i = 0; i < titles_.size(); ++i) {
        auto need = std::max(kLeastTitle, display_width(titles_[i]));
        auto word = std::max(kLeastTitle, widest_word(titles_[i]));
        for (const auto& row : held_) {
            const auto line = widest_line(row[i]);
            need = std::max(need, line);
            if (line > word && word < kLongWord)
                word = std::max(word, std::min(kLongWord, widest_word(row[i])));
        }
        needs.push_back(need);
        words.push_back(word);
    }
    if (form_ == TableForm::fitting && fits(needs, words)) {
        print_header();
    }
    for (const auto& row : held_) print(row);
    held_.clear();
}

// Sets the columns' widths if rows can be read in columns: no word is cut, and cells wrap little.
bool TextTable::fits(const std::vector<std::size_t>& needs, const std::vector<std::size_t>& words) {
    const auto gaps = gap_for(needs.size()) * (needs.size() - 1);
    if (style_.width == 0 || sum(needs) + gaps <= style_.width) {
        widths_ = needs;
        return true;
    }
    if (needs.size() == 1) {
        widths_ = {style_.width};
        return true;
    }
    if (sum(words) + gaps > style_.width) return false;
    widths_ = fair_widths(words, needs, style_.width - gaps);
    std::size_t more = 0;
    for (const auto& row : held_) {
        std::size_t height = 1;
        std::size_t wrapped_height = 1;
        for (std::size_t i = 0; i < row.size(); ++i) {
            height = std::max(height, split_at(row[i], '\n').size());
            wrapped_height = std::max(wrapped_height, wrapped(row[i], widths_[i]).size());
        }
        more += wrapped_height - height;
    }
    constexpr std::size_t kMoreLines = 2;  // of a row, on the average
    if (more > kMoreLines * held_.size()) widths_.clear();
    return !widths_.empty();
}

void TextTable::print_header() {
    std::vector<std::vector<std::string>> titles;
    std::vector<std::vector<std::string>> rules;
    for (std::size_t i = 0; i < titles_.size(); ++i) {
        titles.push_back(lines_in(titles_[i], widths_[i]));
        rules.push_back({std::string(widths_[i], '-')});
    }
    print_lines(titles);
    print_lines(rules);
}

// A word that is wider than its column, since it came late, pushes what follows to the right.
std::vector<std::string> TextTable::lines_in(const std::string& cell, std::size_t width) const {
    if (style_.width == 0) return {cell};
    return wrapped(cell, width >= kLongWord || titles_.size() == 1
                             ? width
                             : std::max(width, widest_word(cell)));
}

void TextTable::print(const Row& row) {
    if (widths_.empty()) return print_block(row);
    std::vector<std::vector<std::string>> cells;
    for (std::size_t i = 0; i < row.size(); ++i) cells.push_back(lines_in(row[i], widths_[i]));
    print_lines(cells);
}

void TextTable::print_lines(const std::vector<std::vector<std::string>>& cells) {
    std::size_t height = 0;
    for (const auto& lines : cells) height = std::max(height, lines.size());
    const auto gap = gap_for(cells.size());
    for (std::size_t row = 0; row < height; ++row) {
        std::string line;
        std::size_t end = 0;    // the column behind the last printed text
        std::size_t start = 0;  // the column where the next cell begins
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (row < cells[i].size() && !cells[i][row].empty()) {
                if (start < end + gap && end > 0) start = end + gap;
                line.append(start - end, ' ').append(cells[i][row]);
                end = start + display_width(cells[i][row]);
            }
            start += widths_[i] + gap;
        }
        out_ << line << '\n';
    }
}

void TextTable::print_block(const Row& row) {
    const auto heading = "-- " + std::to_string(++blocks_) + " ";
    const auto width = style_.width == 0 ? kRule : std::min<std::size_t>(style_.width, kRule);
    out_ << heading << std::string(width - std::min(width, heading.size()), '-') << '\n';
    std::vector<std::pair<std::string, std::string>> lines;
    for (std::size_t i = 0; i < row.size(); ++i) lines.emplace_back(titles_[i], row[i]);
    print_labelled(out_, lines, style_);
}

void print_table(std::ostream& out, const std::vector<std::string>& titles,
                 const std::vector<std::vector<std::string>>& rows, const TerminalStyle& style) {
    TextTable table(out, titles, style);
    for (const auto& row : rows) table.add(row);
    table.end();
}

void print_labelled(std::ostream& out,
                    const std::vector<std::pair<std::string, std::string>>& lines,
                    const TerminalStyle& style) {
    constexpr std::size_t kGap = 2;
    constexpr std::size_t kLeastText = 10;
    std::size_t labels = 0;
    std::size_t texts = 0;
    for (const auto& [label, text] : lines) {
        labels = std::max(labels, display_width(label));
        texts = std::max(texts, widest_line(text));
    }
    const std::size_t width = style.width;
    // Where labels leave too little room, texts stand below them.
    const bool below = width > 0 && labels + kGap + std::min(texts, kLeastText) > width;
    const auto indent = below ? std::min<std::size_t>(kGap, width / 2) : labels + kGap;
    for (const auto& [label, text] : lines) {
        auto line = label;
        if (below) {
            for (const auto& part : wrapped(label, width)) out << part << '\n';
            line.clear();
        }
        const auto parts =
            width == 0 ? std::vector{as_one_line(text)} : wrapped(text, width - indent);
        for (const auto& part : parts) {
            if (!part.empty()) line.append(indent - display_width(line), ' ').append(part);
            line.erase(line.find_last_not_of(' ') + 1);
            if (!line.empty()) out << line << '\n';
            line.clear();
        }
    }
}

}  // namespace qvhost
