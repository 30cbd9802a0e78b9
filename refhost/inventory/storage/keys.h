// Tables of keys: a key of a tool's "key = value" line and the field that its value sets.
//
//     constexpr auto kDrive = std::to_array<Key<Drive>>({
//         {"SN",                as_identity<&Drive::serial>      },
//         {"Media Error Count", as_number<&Drive::media_errors>  },
//     });
#pragma once

#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "inventory/entities.h"
#include "inventory/text.h"

namespace qvhost::inventory {

template <class Entity>
struct Key {
    std::string_view key;
    bool (*set)(Entity& entity, std::string_view value);  // false: the value cannot be read
};

enum class KeyResult { unknown, set, unreadable };

template <class Entity>
KeyResult set_by_key(std::span<const Key<Entity>> keys, std::string_view key,
                     std::string_view value, Entity& entity) {
    for (const auto& row : keys) {
        if (row.key == key) return row.set(entity, value) ? KeyResult::set : KeyResult::unreadable;
    }
    return KeyResult::unknown;
}

template <class Entity, class Value>
Entity entity_of(Value Entity::*);
template <auto Field>
using EntityOf = decltype(entity_of(Field));

// Each sets a field to what the value says. A value that says nothing ("N/A", blank) leaves it empty.

template <auto Field>
bool as_text(EntityOf<Field>& entity, std::string_view value) {
    if (auto text = told(value)) entity.*Field = std::move(text);
    return true;
}

template <auto Field>
bool as_identity(EntityOf<Field>& entity, std::string_view value) {
    if (auto text = told_identity(value)) entity.*Field = std::move(text);
    return true;
}

// "12"
template <auto Field>
bool as_number(EntityOf<Field>& entity, std::string_view value) {
    if (!told(value)) return true;
    const auto number = integer(value);
    if (number) entity.*Field = number;
    return number.has_value();
}

// The number that it begins with: "31C (87.80 F)", "98 %", "12 deg C"; words without a number
// ("Not Supported") say nothing.
template <auto Field>
bool as_leading(EntityOf<Field>& entity, std::string_view value) {
    if (value.find_first_of("0123456789") == std::string_view::npos) return true;
    const auto number = leading_real(value);
    if (!number || std::abs(*number) > 1e15) return false;
    if constexpr (std::is_same_v<std::remove_reference_t<decltype(entity.*Field)>, Integer>) {
        entity.*Field = std::llround(*number);
    } else {
        entity.*Field = number;
    }
    return true;
}

// "447.130 GB [0x37e436b0 Sectors]", "512 Bytes"
template <auto Field>
bool as_bytes(EntityOf<Field>& entity, std::string_view value) {
    if (!told(value)) return true;
    const auto bytes = binary_bytes(value.substr(0, value.find_first_of("[(")));
    if (bytes) entity.*Field = bytes;
    return bytes.has_value();
}

template <auto Field>
bool as_yes_or_no(EntityOf<Field>& entity, std::string_view value) {
    if (!told(value)) return true;
    if (value != "Yes" && value != "No") return false;
    entity.*Field = value == "Yes";
    return true;
}

}  // namespace qvhost::inventory
