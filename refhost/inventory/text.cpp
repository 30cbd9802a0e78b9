#include "inventory/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "text/case.h"

namespace qvhost::inventory {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool is_one_of(std::string_view text, std::span<const std::string_view> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return same_word(text, word); });
}

// With these words tools say that there is nothing.
constexpr auto kNothing = std::to_array<std::string_view>(
    {"-", "--", "n/a", "na", "none", "(none)", "unknown", "<unknown>", "not available",
     "not specified", "not present", "not applicable", "unspecified", "undefined", "not provided",
     "not installed", "<out of spec>"});

// These stand where a maker should have filled something in.
constexpr auto kPlaceholders =
    std::to_array<std::string_view>({"to be filled by o.e.m.",
                                     "to be filled by oem",
                                     "default string",
                                     "system serial number",
                                     "chassis serial number",
                                     "base board serial number",
                                     "serial number",
                                     "no asset tag",
                                     "no asset information",
                                     "asset tag",
                                     "asset-1234567890",
                                     "empty",
                                     "not defined",
                                     "invalid",
                                     "oem",
                                     "o.e.m.",
                                     "xxxxxxxx",
                                     "no dimm",
                                     "03000200-0400-0500-0006-000700080009",
                                     "00:00:00:00:00:00",
                                     "not settable",
                                     "to be filled by o.e.m",
                                     "o.e.m",
                                     "system manufacturer",
                                     "system product name",
                                     "system name",
                                     "product name",
                                     "base board",
                                     "unknown serial",
                                     "not set",
                                     "n.a.",
                                     "no serial",
                                     "0123456789",
                                     "123456789",
                                     "1234567890",
                                     "0123456789abcdef",
                                     "12345678-1234-5678-90ab-cddeefaabbcc",
                                     "sernum0",
                                     "assettagnum0",
                                     "partnum0",
                                     "manufacturer0",
                                     "<bad index>"});

// "0000000000", "00000000-0000-...", "FFFFFFFF", "XXXXXXXX", "..........": one character over and over.
// Short ones of letters and digits may mean something, but for zeros.
bool is_one_character(std::string_view text) {
    constexpr std::size_t kShort = 6;
    static constexpr std::string_view kFill = "0.*-_ :";
    const auto is_gap = [](char c) { return c == '-' || c == ':' || c == ' '; };
    const auto first = std::find_if_not(text.begin(), text.end(), is_gap);
    if (first == text.end()) return true;
    return (text.size() >= kShort || kFill.find(*first) != std::string_view::npos) &&
           std::all_of(text.begin(), text.end(),
                       [&](char c) { return is_gap(c) || lower(c) == lower(*first); });
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    const auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

Text told(std::string_view text) {
    text = trimmed(text);
    if (text.empty() || is_one_of(text, kNothing)) return std::nullopt;
    return std::string(text);
}

Text told_identity(std::string_view text) {
    auto value = told(text);
    if (!value || is_one_of(*value, kPlaceholders) || is_one_character(*value)) return std::nullopt;
    return value;
}

Integer integer(std::string_view text) {
    text = trimmed(text);
    int base = 10;
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty() || text.starts_with('-')) return std::nullopt;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return negative ? -value : value;
}

Real real(std::string_view text) {
    text = trimmed(text);
    double value = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

Real leading_real(std::string_view text) {
    text = trimmed(text);
    double value = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
    return value;
}

Real percent_in(std::string_view text) {
    const auto mark = text.find('%');
    if (mark == npos) return std::nullopt;
    auto begin = mark;
    while (begin > 0 && (is_digit(text[begin - 1]) || text[begin - 1] == '.')) --begin;
    return real(text.substr(begin, mark - begin));
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

Integer binary_bytes(std::string_view text) {
    struct Unit {
        std::string_view name;
        int shift;
    };
    constexpr auto kUnits = std::to_array<Unit>({
        {"b",     0 },
        {"bytes", 0 },
        {"kb",    10},
        {"kib",   10},
        {"mb",    20},
        {"mib",   20},
        {"gb",    30},
        {"gib",   30},
        {"tb",    40},
        {"tib",   40},
        {"pb",    50},
        {"pib",   50},
    });
    text = trimmed(text);
    const auto digits = text.find_first_not_of("0123456789.,");
    if (digits == std::string_view::npos || digits == 0) return std::nullopt;
    const auto number = real(text.substr(0, digits));
    const auto unit = trimmed(text.substr(digits));
    if (!number) return std::nullopt;
    for (const auto& [name, shift] : kUnits) {
        if (!same_word(unit, name)) continue;
        const double bytes = std::ldexp(*number, shift);
        if (bytes >= 9.2e18) return std::nullopt;
        return std::llround(bytes);
    }
    return std::nullopt;
}

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> found;
    auto begin = text.find_first_not_of(kBlanks);
    while (begin != std::string_view::npos) {
        const auto end = text.find_first_of(kBlanks, begin);
        found.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(kBlanks, end);
    }
    return found;
}

std::vector<std::string_view> fields_between(std::string_view text, char separator) {
    std::vector<std::string_view> found;
    for (;;) {
        const auto end = text.find(separator);
        found.push_back(trimmed(text.substr(0, end)));
        if (end == std::string_view::npos) return found;
        text.remove_prefix(end + 1);
    }
}

std::optional<KeyValue> key_value(std::string_view line, std::string_view separator) {
    const auto at = line.find(separator);
    if (at == std::string_view::npos) return std::nullopt;
    const KeyValue pair{trimmed(line.substr(0, at)), trimmed(line.substr(at + separator.size()))};
    if (pair.key.empty()) return std::nullopt;
    return pair;
}

Text iso_time(int year, int month, int day, int hour, int minute, int second) {
    constexpr int kFirstYear = 1990;
    if (year < kFirstYear || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31 ||
        hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60)
        return std::nullopt;
    std::string text = "0000-00-00T00:00:00";
    const auto write = [&](std::size_t end, int number) {
        for (; number > 0; number /= 10) text[--end] = static_cast<char>('0' + number % 10);
    };
    write(4, year);
    write(7, month);
    write(10, day);
    write(13, hour);
    write(16, minute);
    write(19, second);
    return text;
}

int month_number(std::string_view name) {
    constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";
    if (name.size() < 3) return 0;
    const char beginning[] = {lower(name[0]), lower(name[1]), lower(name[2])};
    for (std::size_t i = 0; i < kMonths.size(); i += 3) {
        if (kMonths.substr(i, 3) == std::string_view(beginning, 3))
            return static_cast<int>(i / 3) + 1;
    }
    return 0;
}

std::string filled_in(std::string_view text, std::string_view n) {
    std::string filled(text);
    for (auto at = filled.find("{n}"); at != std::string::npos; at = filled.find("{n}", at)) {
        filled.replace(at, 3, n);
        at += n.size();
    }
    return filled;
}

}  // namespace qvhost::inventory
