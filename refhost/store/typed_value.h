// A value of a table with SQL types, for code that knows its type.
#pragma once

#include <cstdint>
#include <string>

#include "store/store.h"

namespace qvhost {

// The text that the value is; empty if it is none.
inline std::string text_of(const TypedValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text ? *text : std::string();
}

// The integer that the value is; `otherwise` if it is none.
inline std::int64_t integer_of(const TypedValue& value, std::int64_t otherwise = 0) {
    const auto* integer = std::get_if<std::int64_t>(&value);
    return integer ? *integer : otherwise;
}

}  // namespace qvhost
