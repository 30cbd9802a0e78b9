#include "qvhost/cli/values.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "qvhost/base/nearest.h"
#include "text/size.h"

namespace qvhost {

namespace {

// Nothing but digits, and no more than an option can hold.
template <class Number = unsigned>
std::optional<Number> whole_number(std::string_view text) {
    Number number = 0;
    const auto* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return number;
}

std::optional<unsigned> seconds(std::string_view text) {
    constexpr struct {
        char unit;
        std::uint64_t seconds;
    } kUnits[] = {
        {'s', 1    },
        {'m', 60   },
        {'h', 3600 },
        {'d', 86400}
    };
    std::uint64_t each = 1;
    for (const auto& [unit, length] : kUnits) {
        if (!text.ends_with(unit)) continue;
        each = length;
        text.remove_suffix(1);
        break;
    }
    const auto number = whole_number(text);
    if (!number || *number > std::numeric_limits<unsigned>::max() / each) return std::nullopt;
    return static_cast<unsigned>(*number * each);
}

// "20M" and "20MiB", by 1024.
std::optional<std::uint64_t> bytes(std::string_view text, std::uint64_t plain) {
    constexpr std::string_view kUnits = "KMGT";
    const auto end = std::min(text.find_first_not_of("0123456789"), text.size());
    const auto number = whole_number<std::uint64_t>(text.substr(0, end));
    const auto unit = text.substr(end);
    auto each = plain;
    if (!unit.empty()) {
        const auto place = kUnits.find(unit.front());
        if (place == std::string_view::npos || (unit.size() > 1 && unit.substr(1) != "iB"))
            return std::nullopt;
        each = std::uint64_t{1} << 10 * (place + 1);
    }
    if (!number || *number > std::numeric_limits<std::uint64_t>::max() / each) return std::nullopt;
    return *number * each;
}

}  // namespace

std::string not_empty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

CLI::Validator one_of(const std::vector<std::string>& values) {
    return {[values](std::string& given) {
                if (std::find(values.begin(), values.end(), given) != values.end())
                    return std::string();
                const auto meant = did_you_mean(given, values);
                return "there is no " + (given.empty() ? "empty value" : given) +
                       (meant.empty() ? "; it is one of " + boost::join(values, ", ") : meant);
            },
            ""};
}

CLI::Validator range(std::uint64_t least, std::uint64_t most) {
    return {[least, most](std::string& given) {
                const auto number = whole_number(given);
                if (number && *number >= least && *number <= most) return std::string();
                return given + " is no whole number from " + std::to_string(least) + " to " +
                       std::to_string(most);
            },
            ""};
}

CLI::Validator seconds_of_time() {
    return {[](std::string& given) {
                const auto number = seconds(given);
                if (!number) return given + " is no time such as 90s, 30m, 2h or 1d";
                given = std::to_string(*number);
                return std::string();
            },
            ""};
}

CLI::Validator bytes_of_size(const CollectOption::Range& range) {
    return {[range](std::string& given) {
                const auto number = bytes(given, range.plain);
                if (!number || *number < range.least || *number > range.most) {
                    const auto bounds = range.most == kAnySize.most
                                            ? ""
                                            : " from " + exact_size_text(range.least) + " to " +
                                                  exact_size_text(range.most);
                    return given + " is no size" + bounds +
                           ": a whole number with K, M, G or T (by 1024), such as 20M or 20MiB; "
                           "without one it counts " +
                           (range.plain == 1 ? "bytes" : "MiB");
                }
                given = std::to_string(*number);
                return std::string();
            },
            ""};
}

}  // namespace qvhost
