// All the ways in which a value is usually written, each with its replacement.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "redact/values.h"

namespace qvhost::redact {

// What may stand beside it, so that it is this value and not a part of another.
enum class Beside {
    anything,
    no_letter_or_digit,
    no_digit,    // of a number
    no_address,  // of an IPv4 address: "110.1.2.3" is not "10.1.2.3"
    no_hex,      // of an IPv6 address, and of an IPv4 address in hexadecimal digits
};

struct Spelling {
    std::string from, to;      // of one length
    bool in_hex_runs = false;  // else in the text with its line ends taken out (normal.h)
    bool is_exact = false;     // capital letters count, as in base64
    Beside beside = Beside::anything;
    bool over_lines = false;  // it may be divided by a line end
};

// `spelled`: as it was seen.
std::vector<Spelling> spellings(const Value& value, const std::string& replacement,
                                const std::set<std::string>& spelled);

// Whether the text stands there as the spelling has to.
bool stands_alone(std::string_view text, std::size_t at, std::size_t end, Beside beside);

}  // namespace qvhost::redact
