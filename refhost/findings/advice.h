// What people do about a finding, by its rule. Each piece of advice names who gives it; for a rule of which
// nobody says what to do there is none.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace qvhost::findings {

struct Advice {
    const char* rule;
    const char* words;
    const char* source;
};

std::span<const Advice> all_advice();

// That of one rule, in the order of the table.
std::vector<Advice> advice_on(std::string_view rule);

}  // namespace qvhost::findings
