#include "report/json_text.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "text/hidden.h"

namespace qvhost {

namespace {

// ASCII characters that a JSON string holds unescaped.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t c = 0x20; c < 0x7f; ++c) plain[c] = c != '"' && c != '\\';
    return plain;
}();

bool is_plain(char c) { return kPlain[static_cast<unsigned char>(c)]; }

constexpr char kHex[] = "0123456789abcdef";

void put_escape(char c, std::string& json) {
    switch (c) {
        case '"':
        case '\\': json += {'\\', c}; break;
        case '\b': json += "\\b"; break;
        case '\t': json += "\\t"; break;
        case '\n': json += "\\n"; break;
        case '\f': json += "\\f"; break;
        case '\r': json += "\\r"; break;
        default: json += {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 0xf]};
    }
}

void put_unit(char32_t unit, std::string& json) {
    json += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) json += kHex[(unit >> shift) & 0xf];
}

void put_code_point(char32_t code, std::string& json) {
    if (code < 0x10000) return put_unit(code, json);
    put_unit(0xd800 + ((code - 0x10000) >> 10), json);
    put_unit(0xdc00 + ((code - 0x10000) & 0x3ff), json);
}

struct CodePoint {
    char32_t code;
    std::size_t bytes;
};

// The first of a text that is UTF-8.
CodePoint first_code_point(std::string_view text) {
    const auto byte = [&](std::size_t at) {
        return char32_t{at < text.size() ? static_cast<unsigned char>(text[at]) : 0u};
    };
    const auto first = byte(0);
    if (first < 0x80) return {first, 1};
    const std::size_t size = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    char32_t code = first & (0xffu >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) code = (code << 6) | (byte(i) & 0x3f);
    return {code, size};
}

// JSON in which all but line ends and blanks stands in strings if it is hidden.
std::string with_escapes(const std::string& json) {
    constexpr auto is_plain_byte = [](char c) { return static_cast<unsigned char>(c) < 0x7f; };
    std::string out;
    for (auto rest = std::string_view(json); !rest.empty();) {
        const auto plain = static_cast<std::size_t>(
            std::find_if_not(rest.begin(), rest.end(), is_plain_byte) - rest.begin());
        out += rest.substr(0, plain);
        rest.remove_prefix(plain);
        if (rest.empty()) break;
        const auto [code, bytes] = first_code_point(rest);
        if (is_hidden(code)) {
            put_code_point(code, out);
        } else {
            out += rest.substr(0, bytes);
        }
        rest.remove_prefix(std::min(bytes, rest.size()));
    }
    return out;
}

}  // namespace

std::string json_line(const nlohmann::ordered_json& json, int indent) {
    return with_escapes(
        json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void put_json_text(std::string_view text, std::string& json) {
    const auto start = json.size();
    json += '"';
    for (auto at = text.begin();;) {
        const auto stop = std::find_if_not(at, text.end(), is_plain);
        json.append(at, stop);
        if (stop == text.end()) break;
        if (static_cast<unsigned char>(*stop) >= 0x80) {
            // Texts beyond ASCII are rare. The library knows which of them are UTF-8.
            json.resize(start);
            json += json_line(nlohmann::ordered_json(text));
            return;
        }
        put_escape(*stop, json);
        at = stop + 1;
    }
    json += '"';
}

std::string as_utf8(std::string_view text) {
    const auto is_ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (std::all_of(text.begin(), text.end(), is_ascii)) return std::string(text);
    std::string json;
    put_json_text(text, json);
    return nlohmann::json::parse(json).get<std::string>();
}

}  // namespace qvhost
