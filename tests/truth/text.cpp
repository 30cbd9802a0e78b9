#include "text.h"

#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace truth {

std::string left(const std::string& text, int width) {
    auto padded = text;
    if (padded.size() < static_cast<std::size_t>(width))
        padded.resize(static_cast<std::size_t>(width), ' ');
    return padded;
}

std::string right(const std::string& text, int width) {
    const auto size = static_cast<std::size_t>(width);
    return text.size() >= size ? text : std::string(size - text.size(), ' ') + text;
}

std::string number(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string hex(std::uint64_t value, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(value));
    return text;
}

std::string upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

namespace {

constexpr double kGiga = 1024.0 * 1024.0 * 1024.0;
constexpr double kTera = kGiga * 1024.0;

}  // namespace

// storcli counts whole megabytes and cuts what stands behind the third decimal.
std::string storcli_size(std::int64_t sectors_of_512, bool is_short) {
    const auto megabytes = sectors_of_512 / 2048;
    const bool is_tera = megabytes >= 1024 * 1024;
    const auto thousandths = megabytes * 1000 / (is_tera ? 1024 * 1024 : 1024);
    char digits[32];
    std::snprintf(digits, sizeof digits, "%lld.%03lld", static_cast<long long>(thousandths / 1000),
                  static_cast<long long>(thousandths % 1000));
    std::string text = digits;
    if (is_short) {
        while (text.back() == '0' && text[text.size() - 2] != '.') text.pop_back();
    }
    return text + (is_tera ? " TB" : " GB");
}

std::int64_t bytes_of_size(const std::string& text) {
    const double value = std::strtod(text.c_str(), nullptr);
    const double unit = text.find("TB") != std::string::npos ? kTera : kGiga;
    return std::llround(value * unit);
}

Seconds seconds_at(int year, int month, int day, int hour, int minute, int second) {
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    return std::chrono::sys_days(date).time_since_epoch().count() * Seconds{86400} + hour * 3600 +
           minute * 60 + second;
}

Seconds seconds_of_iso(const std::string& text) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    const int read = std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d", &year, &month, &day, &hour,
                                 &minute, &second);
    return read < 3 ? -1 : seconds_at(year, month, day, hour, minute, second);
}

namespace {

struct Parts {
    int year, month, day, weekday, hour, minute, second;
};

Parts parts(Seconds time) {
    const auto days = std::chrono::sys_days(std::chrono::days(time / 86400));
    const std::chrono::year_month_day date(days);
    const std::chrono::weekday weekday(days);
    const int rest = static_cast<int>(time % 86400);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(weekday.c_encoding()),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

}  // namespace

std::string iso(Seconds time) {
    const auto at = parts(time);
    char text[96];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", at.year, at.month, at.day,
                  at.hour, at.minute, at.second);
    return text;
}

std::string sel_time(Seconds time) {
    const auto at = parts(time);
    char text[96];
    std::snprintf(text, sizeof text, "%02d/%02d/%02d %02d:%02d:%02d", at.month, at.day,
                  at.year % 100, at.hour, at.minute, at.second);
    return text;
}

std::string storcli_time(Seconds time) {
    const auto at = parts(time);
    char text[96];
    std::snprintf(text, sizeof text, "%02d/%02d/%04d %02d:%02d:%02d", at.month, at.day, at.year,
                  at.hour, at.minute, at.second);
    return text;
}

std::string c_time(Seconds time) {
    static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto at = parts(time);
    char text[96];
    std::snprintf(text, sizeof text, "%s %s %2d %02d:%02d:%02d %04d", kDays[at.weekday],
                  kMonths[at.month - 1], at.day, at.hour, at.minute, at.second, at.year);
    return text;
}

}  // namespace truth
