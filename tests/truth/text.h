// Texts as the tools print them: padded cells, numbers with a fixed number of digits, and times in the
// forms of the several tools. Times are seconds since 1970 of a clock that knows no zones.
#pragma once

#include <cstdint>
#include <string>

namespace truth {

std::string left(const std::string& text, int width);   // padded behind; longer texts stay whole
std::string right(const std::string& text, int width);  // padded before
std::string number(double value, int decimals);
std::string hex(std::uint64_t value, int digits);  // lower case
std::string upper(std::string text);

// As storcli prints a size: "446.102 GB" or "1.089 TB"; `is_short`: "931.0 GB", "465.25 GB".
std::string storcli_size(std::int64_t sectors_of_512, bool is_short = false);
// What such a text says, in bytes.
std::int64_t bytes_of_size(const std::string& text);

using Seconds = std::int64_t;
Seconds seconds_at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
Seconds seconds_of_iso(const std::string& text);  // "2026-11-21T06:00:00"
std::string iso(Seconds time);                    // "2026-11-21T06:00:00"
std::string sel_time(Seconds time);               // "11/21/26 06:00:00"
std::string storcli_time(Seconds time);           // "11/21/2026 06:00:00"
std::string c_time(Seconds time);                 // "Sat Nov 21 06:00:00 2026"

}  // namespace truth
