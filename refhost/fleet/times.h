// Times of a fleet: milliseconds since 1970 in UTC, and their texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvhost::fleet {

using Milliseconds = std::int64_t;

// Of "2026-11-22T13:59:04Z" or "2026-11-22T13:59:04.123Z", or of a day, "2026-11-22", at its beginning. Nothing if it
// is neither, or not of this century.
std::optional<Milliseconds> time_of(std::string_view text);

// "2026-11-22T13:59:04Z"
std::string utc_text(Milliseconds time);

// The month that a time is in, as a partition of the runs.
struct Month {
    std::string name;  // "2026_11"
    Milliseconds begin = 0;
    Milliseconds end = 0;  // the next one's beginning
};
Month month_of(Milliseconds time);

// "3 h", "12 d": for people.
std::string age_text(Milliseconds age);

Milliseconds now();

}  // namespace qvhost::fleet
