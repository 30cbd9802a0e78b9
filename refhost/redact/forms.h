// The forms that a value to replace can have, and what replaces it: of the same form and length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvhost::redact {

enum class Form {
    text,  // "EXD00000004": letters become letters, digits digits
    hex,  // a MAC address, a WWN, a UUID, any long number in hexadecimal digits, however it is divided
    ipv4,
    ipv6,
    host,  // a name of one or more labels, each of which is replaced by itself
};

const char* name_of(Form form);
std::optional<Form> form_of(std::string_view name);

// Values are compared as this: "00:25:90:AB:CD:EF" is "002590abcdef", an IPv6 address its 32 digits, a name or text
// itself in lower case. Nothing: the text has not that form.
std::optional<std::string> canonical(Form form, std::string_view text);

// The bytes of a canonical IPv6 address as it is written short: "fe80::1".
std::string short_ipv6(std::string_view canonical);

// The digits of a WWN, and of them those that say who made the device.
inline constexpr std::size_t kWwnDigits = 16, kMakerDigits = 7;

// The end of a WWN of 16 digits as smartctl's JSON has it, a decimal number: {"naa": 5, "oui": 3152, "id": 2712847316}.
// Nothing: the number has no such end.
std::optional<std::string> low_number(Form form, std::string_view canonical);

// Bytes that only the key's owner can tell.
class Noise {
public:
    Noise(std::string key, std::string subject);
    unsigned below(unsigned bound);  // at most 65536

private:
    std::string key_, subject_, bytes_;
    std::size_t used_ = 0;
    unsigned blocks_ = 0;
};

// What could stand for a canonical value: canonical, too, and of the same length in every spelling. `loosely`: also
// parts that are otherwise kept, for values of which too few others are possible. Of hosts: see substitutes.h.
std::string disguised(Form form, std::string_view canonical, Noise& noise, bool loosely);

// The replacement, with upper-case letters where the text that it replaces has them. Both are of one length.
std::string in_case_of(std::string_view text, std::string_view replacement);

}  // namespace qvhost::redact
