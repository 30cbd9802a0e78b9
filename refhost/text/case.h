// Texts compared without regard to capital letters. Letters are those of ASCII, in every locale.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace qvhost {

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

// Whether both are the same but for capital letters.
constexpr bool same_word(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char one, char other) { return lower(one) == lower(other); });
}

}  // namespace qvhost
