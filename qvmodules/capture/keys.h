// Parsers of the kind "a key in a line sets a property":
//     Product Name = MegaRAID SAS 9361-8i
// The keys are tested in the order of their table, anywhere in the line; the first one found
// decides, and it is searched from the left. The value is the rest of the line as it stands, blanks
// and line end included.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "capture/lines.h"
#include "capture/record.h"
#include "capture/text.h"

namespace marlox::repository::capture {

// On which lines a key counts.
struct When {
    std::string_view with = {};                    // only on those that contain this as well
    std::array<std::string_view, 3> without = {};  // on none that contains one of these

    constexpr bool holds(std::string_view line) const {
        if (line.find(with) == std::string_view::npos) return false;
        for (const auto part : without) {
            if (!part.empty() && line.find(part) != std::string_view::npos) return false;
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
    std::size_t at;  // where the key starts in the line
};

inline std::optional<KeyHit> find_key(std::span<const Key> keys, std::string_view line) {
    for (const Key& key : keys) {
        const auto at = line.find(key.text);
        if (at != std::string_view::npos && key.when.holds(line)) return KeyHit{&key, at};
    }
    return std::nullopt;
}

inline std::string_view value_behind(const KeyHit& hit, std::string_view line) {
    return rest(line, hit.at + hit.key->text.size() + hit.key->skip.characters);
}

// Reads blocks of such lines into one record, which is added at every line of the key `last`.
inline void read_keys(Lines& lines, std::span<const Key> keys, std::string_view last,
                      Record record) {
    while (const auto line = lines.next()) {
        const auto hit = find_key(keys, *line);
        if (!hit) continue;
        record.set(hit->key->id, hit->key->display, value_behind(*hit, *line));
        if (hit->key->id == last) record.add();
    }
}

// Whether a table can mean what it says: ids without blanks, the last property in the table, and no
// key that an earlier, unconditional one contained in it would always win over.
consteval bool well_formed(std::span<const Key> keys, std::string_view last) {
    bool has_last = false;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const Key& key = keys[i];
        if (key.text.empty() || key.id.empty() || key.display.empty()) return false;
        if (key.id.find(' ') != std::string_view::npos) return false;
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
