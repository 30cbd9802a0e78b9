#include "redact/spellings.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "redact/letters.h"
#include "text/case.h"

namespace qvhost::redact {

namespace {

constexpr std::size_t kShortestBase64 = 6;
constexpr std::size_t kShortestHexRun = 10;
constexpr std::size_t kShortestOverLines = 8;
constexpr std::size_t kShortestAnywhere = 8;
constexpr std::size_t kLongAnywhere = 12;

using Pair = std::pair<std::string, std::string>;  // of the value, of its replacement

template <class Change>
Pair both(const Pair& pair, Change change) {
    return {change(pair.first), change(pair.second)};
}

std::string bytes_of(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes +=
            static_cast<char>(kHexDigits.find(digits[i]) * 16 + kHexDigits.find(digits[i + 1]));
    return bytes;
}

// The bytes in the opposite order, in groups: 2 digits of hex, or one character.
std::string reversed(std::string_view text, std::size_t group) {
    std::string made;
    for (std::size_t end = text.size(); end >= group; end -= group)
        made += text.substr(end - group, group);
    return made;
}

// Neighbours change places, as in words of 16 bits whose bytes were swapped.
std::string swapped(std::string_view text, std::size_t group) {
    std::string made;
    for (std::size_t i = 0; i < text.size(); i += 2 * group)
        made += reversed(text.substr(i, 2 * group), group);
    return made;
}

// As SMBIOS stores a UUID: its first three numbers begin with the lowest byte.
std::string mixed_order(const std::string& digits) {
    return reversed(digits.substr(0, 8), 2) + reversed(digits.substr(8, 4), 2) +
           reversed(digits.substr(12, 4), 2) + digits.substr(16);
}

std::string divided(std::string_view digits, std::size_t group, char divider) {
    std::string made;
    for (std::size_t i = 0; i < digits.size(); i += group) {
        if (i > 0) made += divider;
        made += digits.substr(i, group);
    }
    return made;
}

std::string uuid_text(const std::string& digits) {
    return digits.substr(0, 8) + '-' + digits.substr(8, 4) + '-' + digits.substr(12, 4) + '-' +
           digits.substr(16, 4) + '-' + digits.substr(20);
}

// What of a text's base64 is the same whatever stands before it, where so many bytes of a group of three stand there,
// and behind it. `is_end`: nothing stands behind it.
std::string base64_part(std::string_view text, std::size_t before, std::string_view last_two,
                        bool is_end) {
    std::string alphabet;
    for (char c = 'A'; c <= 'Z'; ++c) alphabet += c;
    for (char c = 'a'; c <= 'z'; ++c) alphabet += c;
    alphabet += "0123456789";
    alphabet += last_two;
    std::string bits(before * 8, '0');
    for (const char c : text) {
        for (int bit = 7; bit >= 0; --bit)
            bits += (static_cast<unsigned char>(c) >> bit & 1) != 0 ? '1' : '0';
    }
    while (is_end && bits.size() % 6 != 0) bits += '0';
    std::string made;
    for (std::size_t i = (before * 8 + 5) / 6 * 6; i + 6 <= bits.size(); i += 6) {
        std::size_t number = 0;
        for (std::size_t bit = i; bit < i + 6; ++bit) number = number * 2 + (bits[bit] == '1');
        made += alphabet[number];
    }
    return made;
}

// What is written otherwise in JSON, HTML, URLs.
std::string json_text(std::string_view text) {
    std::string made;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\' || c == '/') {
            made += '\\';
            made += c;
        } else if (byte >= 0xc0 && byte < 0xf0) {
            unsigned code = byte & (byte < 0xe0 ? 0x1fU : 0x0fU);
            const std::size_t more = byte < 0xe0 ? 1 : 2;
            for (std::size_t k = 0; k < more && i + 1 < text.size(); ++k)
                code = code << 6 | (static_cast<unsigned char>(text[++i]) & 0x3fU);
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code & 0xffffU);
            made += escape;
        } else {
            made += c;
        }
    }
    return made;
}

std::string json_text_with_slashes(std::string_view text) {
    auto made = json_text(text);
    for (auto at = made.find("\\/"); at != std::string::npos; at = made.find("\\/", at))
        made.erase(at, 1);
    return made;
}

std::string html_text(std::string_view text) {
    std::string made;
    for (const char c : text) {
        switch (c) {
            case '&': made += "&amp;"; break;
            case '<': made += "&lt;"; break;
            case '>': made += "&gt;"; break;
            case '"': made += "&quot;"; break;
            case '\'': made += "&#39;"; break;
            default: made += c;
        }
    }
    return made;
}

std::string url_text(std::string_view text) {
    std::string made;
    for (const char c : text) {
        if (is_alnum(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            made += c;
        } else {
            made += '%';
            made += hex_of(std::string_view(&c, 1));
        }
    }
    return made;
}

bool has(std::string_view text, bool (*is)(char)) {
    return std::any_of(text.begin(), text.end(), is);
}

bool is_number(std::string_view text) { return std::all_of(text.begin(), text.end(), is_digit); }

// Whether a text is this value wherever it stands, within a word as well.
bool is_distinctive(std::string_view text) {
    const bool is_mixed = has(text, is_digit) && has(text, is_letter);
    return (text.size() >= kShortestAnywhere && is_mixed) ||
           (text.size() >= kLongAnywhere && (is_number(text) || !has(text, is_letter) || is_mixed));
}

bool may_span_lines(std::string_view text) {
    return text.size() >= kShortestOverLines || !is_number(text);
}

class Maker {
public:
    Maker(const Value& value, const std::string& replacement, const std::set<std::string>& spelled)
        : value_(value), replacement_(replacement) {
        seen_ = spelled;
        seen_.insert(value.canonical);
    }

    std::vector<Spelling> make() {
        switch (value_.form) {
            case Form::text:
            case Form::host: make_text(); break;
            case Form::hex: make_hex(); break;
            case Form::ipv4: make_ipv4(); break;
            case Form::ipv6: make_ipv6(); break;
        }
        return std::move(made_);
    }

private:
    void add(const Pair& pair, Beside beside) {
        if (pair.first.size() != pair.second.size() || pair.first.size() < kShortestSearched)
            return;
        made_.push_back({lowered(pair.first), lowered(pair.second), false, false, beside,
                         may_span_lines(pair.first)});
    }

    void add_hex(const Pair& digits) {
        if (digits.first.size() < kShortestHexRun || digits.first.size() != digits.second.size())
            return;
        made_.push_back({digits.first, digits.second, true, false, Beside::anything, true});
    }

    // A text as bytes: in hexadecimal digits and in base64.
    void add_encoded(const Pair& pair) {
        add_hex(both(pair, hex_of));
        add_hex(both(pair, [](const std::string& text) { return swapped(hex_of(text), 2); }));
        add_base64(pair);
    }

    void add_base64(const Pair& bytes) {
        for (std::size_t before = 0; before < 3; ++before) {
            for (const std::string_view last : {"+/", "-_"}) {
                for (const bool is_end : {false, true}) {
                    const auto coded = both(bytes, [&](const std::string& text) {
                        return base64_part(text, before, last, is_end);
                    });
                    if (coded.first.size() < kShortestBase64 || !base64_.insert(coded.first).second)
                        continue;
                    made_.push_back(
                        {coded.first, coded.second, false, true, Beside::anything, true});
                }
            }
        }
    }

    // As it was seen, in lower and in upper case.
    std::set<std::string> written() const {
        std::set<std::string> all;
        for (const auto& one : seen_) {
            std::string raised;
            for (const char c : one) raised += upper(c);
            all.insert({one, lowered(one), raised});
        }
        return all;
    }

    void make_text() {
        const Pair pair(value_.canonical, replacement_);
        const auto beside = is_distinctive(pair.first) ? Beside::anything
                            : is_number(pair.first)    ? Beside::no_digit
                                                       : Beside::no_letter_or_digit;
        for (const auto& spelled : {pair, both(pair, json_text), both(pair, json_text_with_slashes),
                                    both(pair, html_text), both(pair, url_text)})
            add(spelled, beside);
        if (value_.form == Form::text && is_distinctive(pair.first)) {
            add(both(pair, [](const std::string& text) { return swapped(text, 1); }), beside);
            add(both(pair, [](const std::string& text) { return reversed(text, 1); }), beside);
        }
        for (const auto& text : written()) {
            if (text.size() != replacement_.size()) continue;
            add_encoded({text, in_case_of(text, replacement_)});
        }
        // Numbers in groups: "5000 c500 a1b2".
        if (std::all_of(pair.first.begin(), pair.first.end(), is_hex)) add_hex(pair);
    }

    void make_hex() {
        const Pair pair(value_.canonical, replacement_);
        if (pair.first.size() < kShortestHexRun) {
            add(pair, Beside::no_hex);
            return;
        }
        add_hex(pair);
        if (pair.first.size() % 2 == 0) {
            add_hex(both(pair, [](const std::string& digits) { return reversed(digits, 2); }));
            if (pair.first.size() % 4 == 0)
                add_hex(both(pair, [](const std::string& digits) { return swapped(digits, 2); }));
            add_base64(both(pair, bytes_of));
        }
        constexpr std::size_t kUuid = 32;
        if (pair.first.size() == kUuid) {
            add_hex(both(pair, mixed_order));
            add_base64(both(both(pair, mixed_order), bytes_of));
        }
        add_low_number();
        std::set<std::string> texts = written();
        const auto spell = [&](std::string (*write)(const std::string&)) {
            const auto text = write(pair.first);
            std::string raised;
            for (const char c : text) raised += upper(c);
            texts.insert({text, raised});
        };
        spell([](const std::string& digits) { return divided(digits, 2, ':'); });
        spell([](const std::string& digits) { return divided(digits, 2, '-'); });
        if (pair.first.size() == kUuid) spell(uuid_text);
        for (const auto& text : texts) {
            if (const auto replaced = in_shape_of(text)) add_encoded({text, *replaced});
        }
    }

    // The replacement's digits where the text has digits of the value.
    std::optional<std::string> in_shape_of(std::string_view text) const {
        std::string made(text);
        std::size_t used = 0;
        for (char& c : made) {
            if (!is_hex(c)) continue;
            if (used == replacement_.size()) return std::nullopt;
            c = replacement_[used++];
        }
        if (used != replacement_.size()) return std::nullopt;
        return in_case_of(text, made);
    }

    void add_low_number() {
        const auto from = low_number(value_.form, value_.canonical);
        const auto to = low_number(value_.form, replacement_);
        if (from && to) add({*from, *to}, Beside::no_digit);
    }

    void make_ipv4() {
        const Pair pair(value_.canonical, replacement_);
        add(pair, Beside::no_address);
        for (const char divider : {'-', '_'}) {
            add(both(pair,
                     [&](std::string text) {
                         std::replace(text.begin(), text.end(), '.', divider);
                         return text;
                     }),
                Beside::no_letter_or_digit);
        }
        add(both(pair,
                 [](const std::string& text) { return printed(text, "%03u.%03u.%03u.%03u"); }),
            Beside::no_address);
        add(both(pair,
                 [](const std::string& text) {
                     const auto parts = parts_of(text);
                     return std::to_string(parts[3]) + '.' + std::to_string(parts[2]) + '.' +
                            std::to_string(parts[1]) + '.' + std::to_string(parts[0]) + ".in-addr";
                 }),
            Beside::no_digit);
        const auto digits =
            both(pair, [](const std::string& text) { return printed(text, "%02x%02x%02x%02x"); });
        // A number such as 0a000001 is too often something else.
        constexpr std::ptrdiff_t kFewZeros = 4;
        if (std::count(digits.first.begin(), digits.first.end(), '0') <= kFewZeros) {
            add(digits, Beside::no_hex);
            add(both(digits, [](const std::string& text) { return reversed(text, 2); }),
                Beside::no_hex);
        }
        add_encoded(pair);
    }

    static std::array<unsigned, 4> parts_of(const std::string& address) {
        std::array<unsigned, 4> parts{};
        std::sscanf(address.c_str(), "%u.%u.%u.%u", &parts[0], &parts[1], &parts[2], &parts[3]);
        return parts;
    }
    static std::string printed(const std::string& address, const char* format) {
        const auto parts = parts_of(address);
        char text[32];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        std::snprintf(text, sizeof text, format, parts[0], parts[1], parts[2], parts[3]);
#pragma GCC diagnostic pop
        return text;
    }

    void make_ipv6() {
        const Pair pair(value_.canonical, replacement_);
        const auto brief = both(pair, [](const std::string& text) { return short_ipv6(text); });
        add(brief, Beside::no_hex);
        add_hex(pair);
        add_hex(both(pair, [](const std::string& digits) { return reversed(digits, 1); }));
        add_base64(both(pair, bytes_of));
        add_encoded(brief);
    }

    const Value& value_;
    const std::string& replacement_;
    std::set<std::string> seen_, base64_;
    std::vector<Spelling> made_;
};

}  // namespace

std::vector<Spelling> spellings(const Value& value, const std::string& replacement,
                                const std::set<std::string>& spelled) {
    return Maker(value, replacement, spelled).make();
}

bool stands_alone(std::string_view text, std::size_t at, std::size_t end, Beside beside) {
    const char before = at > 0 ? text[at - 1] : '\n';
    const char behind = at_or_end(text, end);
    switch (beside) {
        case Beside::anything: return true;
        case Beside::no_letter_or_digit:
            return !is_alnum(before) && !is_wide(before) && !is_alnum(behind) && !is_wide(behind);
        case Beside::no_digit: return !is_digit(before) && !is_digit(behind);
        case Beside::no_address:
            return !is_digit(before) && !is_digit(behind) &&
                   !(before == '.' && at > 1 && is_digit(text[at - 2])) &&
                   !(behind == '.' && is_digit(at_or_end(text, end + 1)));
        case Beside::no_hex:
            return !is_hex(before) && !is_hex(behind) && before != ':' &&
                   !(behind == ':' && is_hex(at_or_end(text, end + 1)));
    }
    return false;
}

}  // namespace qvhost::redact
