#include "report/json_text.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace qvhost {

namespace {

// ASCII characters that a JSON string holds unescaped.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t c = 0x20; c < 0x80; ++c) plain[c] = c != '"' && c != '\\';
    return plain;
}();

bool is_plain(char c) { return kPlain[static_cast<unsigned char>(c)]; }

void put_escape(char c, std::string& json) {
    constexpr char kHex[] = "0123456789abcdef";
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

}  // namespace

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
            json +=
                nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
            return;
        }
        put_escape(*stop, json);
        at = stop + 1;
    }
    json += '"';
}

std::string as_utf8(std::string_view text) {
    std::string json;
    put_json_text(text, json);
    return nlohmann::json::parse(json).get<std::string>();
}

}  // namespace qvhost
