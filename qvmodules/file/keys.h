// Parsers of the kind "a key in a line sets a property":
//     Product Name = MegaRAID SAS 9361-8i
// A line belongs to the first key of the table that it contains, wherever the key stands in it; the
// leftmost place counts. The value is the rest of the line as it stands, blanks and line end
// included.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"

namespace marlox::repository::capture {

// On which lines a key counts.
struct When {
    std::string_view with = {};                    // only on those that contain this as well
    std::array<std::string_view, 3> without = {};  // on none that contains one of these

    constexpr bool holds(std::string_view line) const {
        if (!with.empty() && !contains(line, with)) return false;
        for (const auto part : without) {
            if (!part.empty() && contains(line, part)) return false;
        }
        return true;
    }
};

// How many characters between the key and its value are left out.
struct Skip {
    std::size_t characters = 0;
};

// Names the property whose key stands earlier in the table but is looked for later.
struct Before {
    std::string_view id = {};
};

// A row of a parser's table: the key and the column that its value goes to.
struct Key {
    std::string_view text;
    Column column;
    When when = {};
    Skip skip = {};
    Before before = {};

    consteval Key(const char* key, Column property) : text(key), column(property) {}
    consteval Key(const char* key, Column property, When condition, Before other = {})
        : text(key), column(property), when(condition), before(other) {}
    consteval Key(const char* key, Column property, Skip behind)
        : text(key), column(property), skip(behind) {}
};

// A parser's table stands in the order of the layout. Its keys are looked for in the same order,
// except for those that have a `before`.
template <std::size_t n>
consteval std::array<Key, n> in_order_of_search(std::array<Key, n> keys) {
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        const auto other = std::find_if(keys.begin(), key, [&](const Key& earlier) {
            return earlier.column.id == key->before.id;
        });
        if (other != key) std::rotate(other, key, key + 1);
    }
    return keys;
}

struct KeyHit {
    const Key* key;
    std::size_t row;  // of the key in its table
    std::size_t at;   // where the key starts in the line
};

inline std::optional<KeyHit> find_key(std::span<const Key> keys, std::string_view line) {
    for (std::size_t row = 0; row < keys.size(); ++row) {
        const auto at = line.find(keys[row].text);
        if (at != std::string_view::npos && keys[row].when.holds(line))
            return KeyHit{&keys[row], row, at};
    }
    return std::nullopt;
}

// Whether all keys end with the same character, ":" or "=".
constexpr bool end_alike(std::span<const Key> keys) {
    return std::all_of(keys.begin(), keys.end(),
                       [&](const Key& key) { return key.text.back() == keys.front().text.back(); });
}

// Whether `text` ends with `key`. The first character alone decides nearly always.
constexpr bool ends_with(std::string_view text, std::string_view key) {
    return text.size() >= key.size() && text[text.size() - key.size()] == key.front() &&
           text.ends_with(key);
}

// The same as find_key() for keys that end alike, several times faster: such a key can only stand
// where its last character is, and most lines do not have it at all.
inline std::optional<KeyHit> find_key_alike(std::span<const Key> keys, std::string_view line) {
    const char last = keys.front().text.back();
    std::optional<KeyHit> hit;
    auto end = line.find(last);
    while (end != std::string_view::npos) {
        const auto head = line.substr(0, end + 1);
        for (std::size_t row = 0; row < keys.size(); ++row) {
            const Key& key = keys[row];
            if (!ends_with(head, key.text) || !key.when.holds(line)) continue;
            hit = KeyHit{&key, row, head.size() - key.text.size()};
            keys = keys.first(row);  // from here on only an earlier key can still win
        }
        // A run of that character is searched once: no key ends with it doubled.
        end = line.find(last, line.find_first_not_of(last, end));
    }
    return hit;
}

inline std::string_view value_behind(const KeyHit& hit, std::string_view line) {
    return rest(line, hit.at + hit.key->text.size() + hit.key->skip.characters);
}

// Reads blocks of such lines into one record, which is added at every line of the last key.
inline void read_keys(Lines& lines, std::span<const Key> keys, Record record) {
    const auto find = end_alike(keys) ? find_key_alike : find_key;
    const auto names = names_of(keys);
    while (const auto line = lines.next()) {
        const auto hit = find(keys, *line);
        if (!hit) continue;
        record.set(names[hit->row], value_behind(*hit, *line));
        if (hit->row + 1 == keys.size()) record.add();
    }
}

// Whether every key of a table can be found. Keys are in the order of search. None may end with a
// doubled character, and none may contain an earlier key that has no condition.
consteval bool well_formed(std::span<const Key> keys) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const Key& key = keys[i];
        if (key.text.empty() || !is_id(key.column.id) || key.column.label.empty()) return false;
        if (key.text.find_last_not_of(key.text.back()) + 2 != key.text.size()) return false;
        for (std::size_t j = 0; j < i; ++j) {
            const bool unconditional = keys[j].when.with.empty() && keys[j].when.without[0].empty();
            if (unconditional && key.text.find(keys[j].text) != std::string_view::npos)
                return false;
        }
    }
    return !keys.empty();
}

}  // namespace marlox::repository::capture
