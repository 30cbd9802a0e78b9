#include "redact/forms.h"

#include <arpa/inet.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <utility>

#include "redact/letters.h"
#include "text/case.h"

namespace qvhost::redact {

namespace {

constexpr std::pair<Form, const char*> kForms[] = {
    {Form::text, "text"},
    {Form::hex,  "hex" },
    {Form::ipv4, "ipv4"},
    {Form::ipv6, "ipv6"},
    {Form::host, "host"},
};
constexpr std::size_t kShortestHex = 8;

std::optional<std::string> hex_digits(std::string_view text) {
    std::string digits;
    for (const char c : text) {
        if (is_hex(c)) {
            digits += lower(c);
        } else if (std::string_view(":-. ").find(c) == std::string_view::npos) {
            return std::nullopt;
        }
    }
    if (digits.size() < kShortestHex) return std::nullopt;
    return digits;
}

std::optional<std::string> ipv4(std::string_view text) {
    std::string address;
    for (int part = 0; part < 4; ++part) {
        const auto dot = text.find('.');
        if ((dot == std::string_view::npos) != (part == 3)) return std::nullopt;
        const auto digits = text.substr(0, dot);
        if (digits.empty() || digits.size() > 3 || (digits.size() > 1 && digits[0] == '0'))
            return std::nullopt;
        int number = 0;
        for (const char c : digits) {
            if (!is_digit(c)) return std::nullopt;
            number = number * 10 + (c - '0');
        }
        if (number > 255) return std::nullopt;
        address += (part == 0 ? "" : ".") + std::string(digits);
        text.remove_prefix(dot == std::string_view::npos ? text.size() : dot + 1);
    }
    return address;
}

std::optional<std::string> ipv6(std::string_view text) {
    constexpr std::size_t kLongest = 45;
    if (text.size() > kLongest || text.find('.') != std::string_view::npos) return std::nullopt;
    constexpr std::size_t kDigits = 32;
    if (text.size() == kDigits && std::all_of(text.begin(), text.end(), is_hex))
        return lowered(text);
    std::array<unsigned char, 16> bytes{};
    if (::inet_pton(AF_INET6, std::string(text).c_str(), bytes.data()) != 1) return std::nullopt;
    std::string digits;
    for (const unsigned byte : bytes) {
        digits += kHexDigits[byte >> 4];
        digits += kHexDigits[byte & 15];
    }
    return digits;
}

std::optional<std::string> host(std::string_view text) {
    if (text.ends_with('.')) text.remove_suffix(1);
    if (text.empty() || text.size() > 253) return std::nullopt;
    for (const char c : text) {
        if (!is_alnum(c) && c != '-' && c != '.' && c != '_' &&
            static_cast<unsigned char>(c) < 0x80)
            return std::nullopt;
    }
    return lowered(text);
}

char digit_for(char c, Noise& noise) {
    return c == '0' ? '0' : static_cast<char>('1' + noise.below(9));
}

char any_digit(Noise& noise) { return static_cast<char>('0' + noise.below(10)); }

std::string disguised_text(std::string_view text, Noise& noise) {
    const bool is_hexadecimal =
        std::all_of(text.begin(), text.end(), [](char c) { return is_hex(c) || !is_alnum(c); });
    std::string made(text);
    bool first = true;
    for (std::size_t i = 0; i < made.size(); ++i) {
        char& c = made[i];
        const auto byte = static_cast<unsigned char>(c);
        if (is_digit(c)) {
            c = std::exchange(first, false) ? digit_for(c, noise) : any_digit(noise);
        } else if (is_letter(c)) {
            first = false;
            c = static_cast<char>('a' + noise.below(is_hexadecimal ? 6 : 26));
        } else if (byte >= 0x80 && byte < 0xc0 &&
                   (i + 1 == made.size() ||
                    (static_cast<unsigned char>(made[i + 1]) & 0xc0) != 0x80)) {
            // The last byte of a character of another alphabet: one of its neighbours there.
            c = static_cast<char>((byte & 0xf0) | noise.below(16));
        } else if (byte >= 0xc0 && (i + 1 == made.size() ||
                                    (static_cast<unsigned char>(made[i + 1]) & 0xc0) != 0x80)) {
            c = static_cast<char>(0xe0 | noise.below(16));  // of an alphabet of single bytes
        }
    }
    return made;
}

// How much of the beginning says what kind of number it is, and who made the device.
bool is_kept(std::string_view digits, std::size_t at) {
    switch (digits.size()) {
        case 12: return at < 2;
        case kWwnDigits: return at < (digits[0] == '5' || digits[0] == '6' ? kMakerDigits : 1U);
        case 32: return digits[0] == '6' ? at < 7 : at == 12 || at == 16;
        default: return false;
    }
}

std::string disguised_hex(std::string_view digits, Noise& noise, bool loosely) {
    const bool is_decimal = std::all_of(digits.begin(), digits.end(), is_digit);
    std::string made(digits);
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (!loosely && is_kept(digits, i)) continue;
        if (is_digit(made[i]))
            made[i] = i == 0 && is_decimal ? digit_for(made[i], noise) : any_digit(noise);
        else
            made[i] = static_cast<char>('a' + noise.below(6));
    }
    return made;
}

bool is_private(const std::array<unsigned, 4>& parts, std::size_t at) {
    if (parts[0] == 10) return at < 1;
    const bool is_of_two = (parts[0] == 192 && parts[1] == 168) ||
                           (parts[0] == 169 && parts[1] == 254) ||
                           (parts[0] == 172 && parts[1] >= 16 && parts[1] < 32);
    return is_of_two && at < 2;
}

std::string disguised_ipv4(std::string_view address, Noise& noise, bool loosely) {
    std::array<unsigned, 4> parts{};
    const char* at = address.data();
    for (auto& part : parts)
        at = std::from_chars(at, address.data() + address.size(), part).ptr + 1;
    std::string made;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        unsigned part = parts[i];
        if (!is_private(parts, i) || (loosely && i > 0)) {
            if (part < 10)
                part = i == 0 ? 1 + noise.below(9) : noise.below(10);
            else if (part < 100)
                part = 11 + noise.below(89);
            else
                part = i == 0 ? 128 + noise.below(64) : 100 + noise.below(155);
        }
        made += (i == 0 ? "" : ".") + std::to_string(part);
    }
    return made;
}

std::string disguised_ipv6(std::string_view digits, Noise& noise, bool loosely) {
    std::string made(digits);
    for (std::size_t group = 0; group < 32; group += 4) {
        bool first = true;
        for (std::size_t i = group; i < group + 4; ++i) {
            if (first && made[i] == '0') continue;
            if (group > 0 || loosely)
                made[i] = kHexDigits[first ? 1 + noise.below(15) : noise.below(16)];
            first = false;
        }
    }
    return made;
}

}  // namespace

const char* name_of(Form form) { return kForms[static_cast<std::size_t>(form)].second; }

std::optional<Form> form_of(std::string_view name) {
    for (const auto& [form, word] : kForms) {
        if (name == word) return form;
    }
    return std::nullopt;
}

std::optional<std::string> canonical(Form form, std::string_view text) {
    switch (form) {
        case Form::text: return lowered(text);
        case Form::hex: return hex_digits(text);
        case Form::ipv4: return ipv4(text);
        case Form::ipv6: return ipv6(text);
        case Form::host: return host(text);
    }
    return std::nullopt;
}

std::string short_ipv6(std::string_view canonical) {
    std::array<unsigned char, 16> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(kHexDigits.find(canonical[2 * i]) * 16 +
                                              kHexDigits.find(canonical[2 * i + 1]));
    char text[INET6_ADDRSTRLEN];
    ::inet_ntop(AF_INET6, bytes.data(), text, sizeof text);
    return text;
}

std::optional<std::string> low_number(Form form, std::string_view canonical) {
    if (form != Form::hex || canonical.size() != kWwnDigits || canonical[0] != '5')
        return std::nullopt;
    std::uint64_t number = 0;
    std::from_chars(canonical.data() + kMakerDigits, canonical.data() + canonical.size(), number,
                    16);
    return std::to_string(number);
}

Noise::Noise(std::string key, std::string subject)
    : key_(std::move(key)), subject_(std::move(subject)) {}

unsigned Noise::below(unsigned bound) {
    if (used_ + 4 > bytes_.size()) {
        const auto block = subject_ + '\n' + std::to_string(blocks_++);
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned size = 0;
        ::HMAC(::EVP_sha256(), key_.data(), static_cast<int>(key_.size()),
               reinterpret_cast<const unsigned char*>(block.data()), block.size(), digest, &size);
        bytes_.assign(reinterpret_cast<const char*>(digest), size);
        used_ = 0;
    }
    std::uint32_t number = 0;
    for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(bytes_[used_++]);
    return number % bound;
}

std::string disguised(Form form, std::string_view canonical, Noise& noise, bool loosely) {
    switch (form) {
        case Form::hex: return disguised_hex(canonical, noise, loosely);
        case Form::ipv4: return disguised_ipv4(canonical, noise, loosely);
        case Form::ipv6: return disguised_ipv6(canonical, noise, loosely);
        case Form::text:
        case Form::host: break;
    }
    return disguised_text(canonical, noise);
}

std::string in_case_of(std::string_view text, std::string_view replacement) {
    const bool has_upper = std::any_of(text.begin(), text.end(), is_upper);
    const bool has_lower =
        std::any_of(text.begin(), text.end(), [](char c) { return is_letter(c) && !is_upper(c); });
    std::string made(replacement);
    for (std::size_t i = 0; i < made.size() && i < text.size(); ++i) {
        const bool is_raised = is_letter(text[i]) ? is_upper(text[i]) : has_upper && !has_lower;
        if (is_raised) made[i] = upper(made[i]);
    }
    return made;
}

}  // namespace qvhost::redact
