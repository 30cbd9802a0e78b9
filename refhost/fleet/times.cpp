#include "fleet/times.h"

#include <charconv>
#include <chrono>
#include <iterator>

namespace qvhost::fleet {

namespace {

using namespace std::chrono;

constexpr std::size_t kDayDigits = 10;  // "2026-11-22"
constexpr int kFirstYear = 2000;
constexpr int kLastYear = 2099;

// The number that stands there with exactly so many digits.
std::optional<int> digits(std::string_view text, std::size_t at, std::size_t count) {
    if (text.size() < at + count) return std::nullopt;
    int number = 0;
    const auto* const begin = text.data() + at;
    const auto [end, error] = std::from_chars(begin, begin + count, number);
    if (error != std::errc() || end != begin + count || number < 0) return std::nullopt;
    return number;
}

bool is_at(std::string_view text, std::size_t at, std::string_view part) {
    return text.size() >= at && text.substr(at).starts_with(part);
}

std::optional<sys_days> day_of(std::string_view text) {
    const auto years = digits(text, 0, 4);
    const auto months = digits(text, 5, 2);
    const auto days = digits(text, 8, 2);
    if (!years || !months || !days || !is_at(text, 4, "-") || !is_at(text, 7, "-") ||
        *years < kFirstYear || *years > kLastYear)
        return std::nullopt;
    const year_month_day day{year{*years}, month{static_cast<unsigned>(*months)},
                             std::chrono::day{static_cast<unsigned>(*days)}};
    return day.ok() ? std::optional(sys_days(day)) : std::nullopt;
}

Milliseconds since_1970(sys_days day) { return milliseconds(day.time_since_epoch()).count(); }

year_month_day date_of(Milliseconds time) {
    return {floor<days>(sys_time<milliseconds>(milliseconds(time)))};
}

std::string two(unsigned number) { return (number < 10 ? "0" : "") + std::to_string(number); }

}  // namespace

std::optional<Milliseconds> time_of(std::string_view text) {
    const auto day = day_of(text);
    if (!day) return std::nullopt;
    if (text.size() == kDayDigits) return since_1970(*day);
    const auto hour = digits(text, 11, 2);
    const auto minute = digits(text, 14, 2);
    const auto second = digits(text, 17, 2);
    if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 60 ||
        !is_at(text, 10, "T") || !is_at(text, 13, ":") || !is_at(text, 16, ":"))
        return std::nullopt;
    auto rest = text.substr(19);
    int fraction = 0;
    if (const auto told = digits(rest, 1, 3); told && rest.starts_with('.')) {
        fraction = *told;
        rest.remove_prefix(4);
    }
    if (rest != "Z") return std::nullopt;
    return since_1970(*day) + ((*hour * 60 + *minute) * 60 + *second) * Milliseconds{1000} +
           fraction;
}

std::string utc_text(Milliseconds time) {
    const auto date = date_of(time);
    const auto seconds = static_cast<unsigned>((time - since_1970(sys_days(date))) / 1000);
    return std::to_string(static_cast<int>(date.year())) + "-" +
           two(static_cast<unsigned>(date.month())) + "-" + two(static_cast<unsigned>(date.day())) +
           "T" + two(seconds / 3600) + ":" + two(seconds / 60 % 60) + ":" + two(seconds % 60) + "Z";
}

Month month_of(Milliseconds time) {
    const auto date = date_of(time);
    const year_month month{date.year(), date.month()};
    const auto first = [](year_month of) { return since_1970(sys_days(of / std::chrono::day{1})); };
    return {std::to_string(static_cast<int>(date.year())) + "_" +
                two(static_cast<unsigned>(date.month())),
            first(month), first(month + months{1})};
}

std::string age_text(Milliseconds age) {
    constexpr struct {
        Milliseconds unit;
        const char* name;
    } kUnits[] = {
        {86'400'000, " d"  },
        {3'600'000,  " h"  },
        {60'000,     " min"}
    };
    for (const auto& [unit, name] : kUnits) {
        // Two days are told in days, a day and a half in hours.
        if (age >= 2 * unit) return std::to_string(age / unit) + name;
    }
    return std::to_string(age / 1000) + " s";
}

Milliseconds now() {
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace qvhost::fleet
