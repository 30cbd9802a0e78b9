#include "inventory/columns.h"

#include <algorithm>
#include <limits>

#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }
struct Word {
    std::string_view text;
    std::size_t begin, end;
};

std::vector<Word> words_with_places(std::string_view line) {
    std::vector<Word> found;
    for (const auto word : words(line)) {
        const auto begin = static_cast<std::size_t>(word.data() - line.data());
        found.push_back({word, begin, begin + word.size()});
    }
    return found;
}

bool is_unit(std::string_view word) { return binary_bytes("1 " + std::string(word)).has_value(); }

bool is_number(std::string_view word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), is_digit);
}

bool is_size(std::string_view text) { return text == "0" || binary_bytes(text).has_value(); }

bool fits(Shape shape, std::string_view cell) {
    if (cell.empty() || cell == "-") return true;
    const bool one_word = std::none_of(cell.begin(), cell.end(), is_blank);
    switch (shape) {
        case Shape::word: return one_word && !is_digit(cell.front());
        case Shape::number: return is_number(cell);
        case Shape::code: return one_word;
        case Shape::size: return is_size(cell) || (one_word && !is_digit(cell.front()));
        case Shape::text: return true;
    }
    return false;
}

}  // namespace

std::string_view Row::operator[](std::string_view column) const {
    for (const Cell& cell : cells_) {
        if (cell.column == column) return cell.text;
    }
    return {};
}

bool Row::has(std::string_view column) const {
    return std::any_of(cells_.begin(), cells_.end(),
                       [&](const Cell& cell) { return cell.column == column; });
}

std::optional<Heading> Heading::find(std::string_view line, std::span<const Column> known) {
    // Cheap, since every line of a capture is asked.
    for (const Column& column : known) {
        if (column.required && line.find(column.name) == npos) return std::nullopt;
    }
    Heading heading;
    std::vector<bool> seen(known.size());
    for (std::size_t at = line.find_first_not_of(" \t"); at != npos;
         at = line.find_first_not_of(" \t", at)) {
        const Column* longest = nullptr;
        for (std::size_t i = 0; i < known.size(); ++i) {
            const auto& name = known[i].name;
            const bool here = line.substr(at).starts_with(name) &&
                              (at + name.size() == line.size() || is_blank(line[at + name.size()]));
            if (here && !seen[i] && (!longest || name.size() > longest->name.size()))
                longest = &known[i];
        }
        std::size_t end = std::min(line.find_first_of(" \t", at), line.size());
        if (longest) {
            seen[static_cast<std::size_t>(longest - known.data())] = true;
            end = at + longest->name.size();
            heading.places_.push_back({*longest, at, end});
        } else {
            // "Next Learn": names of several words have one blank between them.
            auto* const before = heading.places_.empty() ? nullptr : &heading.places_.back();
            if (before && before->column.name.empty() && before->end + 1 == at) {
                before->end = end;
            } else {
                ++heading.unknown_;
                heading.places_.push_back({
                    {.name = {}, .shape = Shape::text},
                    at, end
                });
            }
        }
        at = end;
    }
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (known[i].required && !seen[i]) return std::nullopt;
    }
    if (heading.places_.empty()) return std::nullopt;
    return heading;
}

bool Heading::has(std::string_view column) const {
    return std::any_of(places_.begin(), places_.end(),
                       [&](const Place& place) { return place.column.name == column; });
}

std::optional<Row> Heading::cut(std::string_view row) const {
    if (auto cells = cut_by_position(row)) return cells;
    return cut_from_both_ends(row);
}

// The column of a word that stands before the column `right` and behind the one before it.
std::size_t Heading::column_between(std::size_t right) const {
    if (right == 0) return 0;
    if (right == places_.size()) return right - 1;
    const bool to_the_right = places_[right].column.align == Align::right &&
                              places_[right - 1].column.shape != Shape::text;
    return to_the_right ? right : right - 1;
}

std::optional<Row> Heading::cut_by_position(std::string_view row) const {
    const auto row_words = words_with_places(row);
    std::vector<std::size_t> column_of(row_words.size());
    for (std::size_t w = 0; w < row_words.size(); ++w) {
        const Word& word = row_words[w];
        std::size_t below = npos;
        for (std::size_t c = 0; c < places_.size(); ++c) {
            if (word.begin >= places_[c].end || word.end <= places_[c].begin) continue;
            // The last column takes what is below its name, however wide.
            if (below != npos) return std::nullopt;
            below = c;
        }
        if (below == npos) {
            std::size_t right = 0;
            while (right < places_.size() && places_[right].begin < word.begin) ++right;
            below = column_between(right);
        }
        if (w > 0 && below < column_of[w - 1]) return std::nullopt;
        column_of[w] = below;
    }
    // The number of a size whose unit alone stands below the name, beside a text.
    for (std::size_t w = 0; w + 1 < row_words.size(); ++w) {
        const std::size_t next = column_of[w + 1];
        if (next == column_of[w] + 1 && places_[next].column.shape == Shape::size &&
            row_words[w].begin >= places_[column_of[w]].end && is_unit(row_words[w + 1].text) &&
            real(row_words[w].text))
            column_of[w] = next;
    }

    Row cells;
    cells.cells_.reserve(places_.size());
    std::size_t w = 0;
    for (std::size_t c = 0; c < places_.size(); ++c) {
        const auto& column = places_[c].column;
        std::string_view cell;
        if (w < row_words.size() && column_of[w] == c) {
            const auto begin = row_words[w].begin;
            while (w + 1 < row_words.size() && column_of[w + 1] == c) ++w;
            cell = row.substr(begin, row_words[w].end - begin);
            ++w;
        }
        if ((column.required && cell.empty()) || !fits(column.shape, cell)) return std::nullopt;
        cells.cells_.push_back({column.name, cell});
    }
    return cells;
}

std::optional<Row> Heading::cut_from_both_ends(std::string_view row) const {
    if (unknown_ > 0) return std::nullopt;
    const auto is_text = [](const Place& place) { return place.column.shape == Shape::text; };
    const auto texts = std::count_if(places_.begin(), places_.end(), is_text);
    if (texts > 1) return std::nullopt;
    const auto free = static_cast<std::size_t>(
        std::find_if(places_.begin(), places_.end(), is_text) - places_.begin());

    const auto row_words = words_with_places(row);
    std::vector<std::string_view> found(places_.size());
    const auto span = [&](std::size_t first, std::size_t last) {
        return row.substr(row_words[first].begin, row_words[last].end - row_words[first].begin);
    };
    const auto is_pair = [&](std::size_t first) {
        return first + 1 < row_words.size() && real(row_words[first].text) &&
               is_unit(row_words[first + 1].text);
    };
    std::size_t begin = 0, end = row_words.size();  // the words that are not taken
    for (std::size_t c = 0; c < free; ++c) {
        if (begin >= end) return std::nullopt;
        const std::size_t last =
            begin + (places_[c].column.shape == Shape::size && is_pair(begin) ? 1U : 0U);
        found[c] = span(begin, last);
        begin = last + 1;
    }
    for (std::size_t c = places_.size(); c > free + 1; --c) {
        if (begin >= end) return std::nullopt;
        std::size_t first = end - 1;
        if (places_[c - 1].column.shape == Shape::size && first > begin && is_pair(first - 1))
            --first;
        found[c - 1] = span(first, end - 1);
        end = first;
    }
    if (begin > end || (begin < end && free == places_.size())) return std::nullopt;
    if (begin < end) found[free] = span(begin, end - 1);

    Row cells;
    cells.cells_.reserve(places_.size());
    for (std::size_t c = 0; c < places_.size(); ++c) {
        const auto& column = places_[c].column;
        if ((column.required && found[c].empty()) || !fits(column.shape, found[c]))
            return std::nullopt;
        cells.cells_.push_back({column.name, found[c]});
    }
    return cells;
}

bool is_ruler(std::string_view line) {
    line = trimmed(line);
    if (line.size() < 3) return false;
    const char mark = line.front();
    if (mark != '-' && mark != '=') return false;
    return std::all_of(line.begin(), line.end(), [&](char c) { return c == mark || is_blank(c); });
}

}  // namespace qvhost::inventory
