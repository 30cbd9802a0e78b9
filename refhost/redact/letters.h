// What kind of character a byte is, of ASCII, in every locale; and bytes in hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

#include "text/case.h"

namespace qvhost::redact {

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool is_letter(char c) { return is_upper(c) || (c >= 'a' && c <= 'z'); }
constexpr bool is_alnum(char c) { return is_digit(c) || is_letter(c); }
constexpr bool is_hex(char c) {
    return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
constexpr bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r'; }
constexpr char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
// Of a letter beyond ASCII.
constexpr bool is_wide(char c) { return static_cast<unsigned char>(c) >= 0x80; }

inline constexpr std::string_view kHexDigits = "0123456789abcdef";

// "00a4": two digits a byte.
inline std::string hex_of(std::string_view bytes) {
    std::string digits;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        digits += kHexDigits[byte >> 4];
        digits += kHexDigits[byte & 15];
    }
    return digits;
}

// The character of a text at a place; '\n' before its beginning and behind its end.
constexpr char at_or_end(std::string_view text, std::size_t at) {
    return at < text.size() ? text[at] : '\n';
}

constexpr std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (is_space(text.front()) || text.front() == '\n')) text.remove_prefix(1);
    while (!text.empty() && (is_space(text.back()) || text.back() == '\n' || text.back() == '\0'))
        text.remove_suffix(1);
    return text;
}

}  // namespace qvhost::redact
