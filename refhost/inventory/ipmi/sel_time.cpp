#include "inventory/ipmi/sel_time.h"

#include <array>
#include <optional>

#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct Numbers {
    std::array<int, 3> of{};
};

// Three numbers between separators: "11/14/23".
std::optional<Numbers> three_numbers(std::string_view text, char separator) {
    Numbers numbers;
    std::size_t index = 0, digits = 0;
    for (const char c : text) {
        if (c == separator && digits > 0 && index < 2) {
            ++index;
            digits = 0;
        } else if (c >= '0' && c <= '9' && digits < 4) {
            numbers.of[index] = numbers.of[index] * 10 + (c - '0');
            ++digits;
        } else {
            return std::nullopt;
        }
    }
    if (index != 2 || digits == 0) return std::nullopt;
    return numbers;
}

struct Date {
    int year, month, day;
};

std::optional<Date> date_of(std::string_view text) {
    text = trimmed(text);
    Date date{};
    if (const auto iso = three_numbers(text, '-')) {
        date = {iso->of[0], iso->of[1], iso->of[2]};
    } else if (const auto dotted = three_numbers(text, '.')) {
        date = {dotted->of[2], dotted->of[1], dotted->of[0]};
    } else if (const auto slashed = three_numbers(text, '/')) {
        const auto& [first, second, third] = slashed->of;
        // Month first, but for a locale that has the day there.
        const bool day_first = first > 12 && second <= 12;
        date = {third, day_first ? second : first, day_first ? first : second};
    } else {
        return std::nullopt;
    }
    if (date.year < 100) date.year += date.year < 70 ? 2000 : 1900;
    return date;
}

std::optional<Numbers> time_of(std::string_view text) {
    const auto parts = words(text);
    if (parts.empty()) return std::nullopt;
    auto time = three_numbers(parts[0], ':');
    if (!time || parts.size() < 2) return time;
    int& hour = time->of[0];
    if (parts[1] == "PM" && hour < 12) hour += 12;
    if (parts[1] == "AM" && hour == 12) hour = 0;
    return time;
}

}  // namespace

bool is_bmc_time(std::string_view date, std::string_view time) {
    return date_of(date).has_value() && time_of(time).has_value();
}

Text bmc_time(std::string_view date_text, std::string_view time_text) {
    constexpr int kFirstYear = 2000;
    const auto date = date_of(date_text);
    const auto time = time_of(time_text);
    if (!date || !time || date->year < kFirstYear) return std::nullopt;
    const auto& [hour, minute, second] = time->of;
    return iso_time(date->year, date->month, date->day, hour, minute, second);
}

}  // namespace qvhost::inventory
