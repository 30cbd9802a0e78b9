// Small pieces of text that many tools print alike: trimmed words, numbers with units, dates.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inventory/entities.h"

namespace qvhost::inventory {

inline constexpr auto npos = std::string_view::npos;

// Without blanks and tabs at its ends.
std::string_view trimmed(std::string_view text);

// The trimmed text; empty where it is blank or one of the words with which tools say that there is
// nothing: "-", "N/A", "NA", "None", "Unknown", "Not Available", ...
Text told(std::string_view text);

// As told(), and empty for serial numbers, UUIDs and tags that nobody filled in: "To be filled by
// O.E.M.", "0000000000", "Default string", "Not Specified", ...
Text told_identity(std::string_view text);

// The whole trimmed text as a number; empty if it is anything else. Integers may be hexadecimal with a
// leading "0x"; reals are finite.
Integer integer(std::string_view text);
Real real(std::string_view text);

// The number that the text begins with: "31C (87.80 F)" is 31. Empty if it begins with none.
Real leading_real(std::string_view text);

// The number before the first '%': "recovery =  5.5% (57600/1046528)" is 5.5. Empty if there is none.
Real percent_in(std::string_view text);

bool is_digit(char c);

// The text with `n` in the places of "{n}": of "c{n}_showall.txt" that of controller `n`.
std::string filled_in(std::string_view text, std::string_view n);

// A size in bytes: "930.390 GB" is 930.390 * 2^30 (binary units, as storcli, arcconf and dmidecode mean
// them, rounded to the nearest byte). Empty if it is none.
Integer binary_bytes(std::string_view text);

// The words between blanks and tabs.
std::vector<std::string_view> words(std::string_view text);

// The fields between separators, trimmed; empty ones too.
std::vector<std::string_view> fields_between(std::string_view text, char separator);

struct KeyValue {
    std::string_view key;    // trimmed
    std::string_view value;  // trimmed
};

// "Product Name = AVAGO 9361" at the first separator; nothing if there is none or no key before it.
std::optional<KeyValue> key_value(std::string_view line, std::string_view separator);

// A date and time as an ISO 8601 text without a zone, "2026-11-21T04:05:06"; empty where it is no
// date, or one of a clock that was never set (before 1990).
Text iso_time(int year, int month, int day, int hour, int minute, int second);

// The month of "Jan", "January", ...; 0 if it is none.
int month_number(std::string_view name);

}  // namespace qvhost::inventory
