// Tables of the words that tools print for a state, and the rule that each calls for.
#pragma once

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "text/case.h"

namespace qvhost::findings {

struct StateRow {
    std::string_view state;  // as printed, in any case
    const char* rule;        // "" if the state is healthy
};

// The rule that a state calls for; nothing if no row knows the state.
template <class Rows>
std::optional<std::string_view> rule_for(const Rows& rows, std::string_view state) {
    // "Predictive failure" is a power supply's, "Predictive Failure" a drive's.
    auto row = std::find_if(std::begin(rows), std::end(rows),
                            [&](const StateRow& one) { return one.state == state; });
    if (row == std::end(rows))
        row = std::find_if(std::begin(rows), std::end(rows),
                           [&](const StateRow& one) { return same_word(one.state, state); });
    if (row == std::end(rows)) return std::nullopt;
    return row->rule;
}

}  // namespace qvhost::findings
