#include "inventory/ipmi/power_supply_name.h"

#include <array>

#include "inventory/forms.h"
#include "inventory/text.h"
#include "text/case.h"

namespace qvhost::inventory {

namespace {

// A name that begins with another stands before it.
constexpr auto kNames = std::to_array<std::string_view>(
    {"System Power Supply", "Power Supply", "PwrSupply", "PSU", "PS"});

}  // namespace

std::string_view power_supply_name(std::string_view text) {
    for (const auto name : kNames) {
        if (text.size() <= name.size() || !same_word(text.substr(0, name.size()), name)) continue;
        std::size_t begin = name.size();
        while (begin < text.size() &&
               (text[begin] == ' ' || text[begin] == '_' || text[begin] == '#'))
            ++begin;
        std::size_t end = begin;
        while (end < text.size() && end - begin < 3 && text[end] >= '0' && text[end] <= '9') ++end;
        if (end > begin) return text.substr(0, end);
    }
    return {};
}

std::optional<std::int64_t> power_supply_number(std::string_view text) {
    const auto name = power_supply_name(text);
    if (name.empty()) return std::nullopt;
    return integer(name.substr(name.find_first_of("0123456789")));
}

}  // namespace qvhost::inventory
