// Parsers of the kind "a key in a line sets a property":
//     Product Name = MegaRAID SAS 9361-8i
// The keys are tested in the order of their table, anywhere in the line; the first one found
// decides, and it is searched from the left. The value is the rest of the line as it stands, blanks
// and line end included.
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

inline constexpr When always{};

// How many characters behind the key are not part of its value.
struct Skip {
    std::size_t characters = 0;
};

struct Key {
    std::string_view text;
    std::string_view id;
    std::string_view display;
    When when = {};
    Skip skip = {};

    consteval Key(const char* key, const char* property, const char* label)
        : text(key), id(property), display(label) {}
    consteval Key(const char* key, const char* property, const char* label, When condition)
        : text(key), id(property), display(label), when(condition) {}
    consteval Key(const char* key, const char* property, const char* label, Skip behind)
        : text(key), id(property), display(label), skip(behind) {}
};

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
            keys = keys.first(row);  // further on, only a key before this one still wins over it
        }
        // No key ends in the middle of "=====".
        end = line.find(last, line.find_first_not_of(last, end));
    }
    return hit;
}

inline std::string_view value_behind(const KeyHit& hit, std::string_view line) {
    return rest(line, hit.at + hit.key->text.size() + hit.key->skip.characters);
}

// Reads blocks of such lines into one record, which is added at every line of the key `last`.
inline void read_keys(Lines& lines, std::span<const Key> keys, std::string_view last,
                      Record record) {
    const auto find = end_alike(keys) ? find_key_alike : find_key;
    const auto names = names_of(keys);
    while (const auto line = lines.next()) {
        const auto hit = find(keys, *line);
        if (!hit) continue;
        record.set(names[hit->row], value_behind(*hit, *line));
        if (hit->key->id == last) record.add();
    }
}

// Whether a table can mean what it says: ids without blanks, the last property in the table, no key
// that ends with a doubled character, and none that an earlier, unconditional one contained in it
// would always win over.
consteval bool well_formed(std::span<const Key> keys, std::string_view last) {
    bool has_last = false;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const Key& key = keys[i];
        if (key.text.empty() || key.id.empty() || key.display.empty()) return false;
        if (key.id.find(' ') != std::string_view::npos) return false;
        if (key.text.find_last_not_of(key.text.back()) + 2 != key.text.size()) return false;
        has_last = has_last || key.id == last;
        for (std::size_t j = 0; j < i; ++j) {
            const bool unconditional = keys[j].when.with.empty() && keys[j].when.without[0].empty();
            if (unconditional && key.text.find(keys[j].text) != std::string_view::npos)
                return false;
        }
    }
    return has_last;
}

}  // namespace marlox::repository::capture
