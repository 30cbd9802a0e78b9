// The table of rules: what is looked at, how bad it is, and why. docs/findings.md is made of it.
#pragma once

#include <span>
#include <string_view>

#include "findings/finding.h"

namespace qvhost::findings {

struct Rule {
    const char* name;
    Subsystem subsystem;
    Severity severity;
    const char* looks_at;  // fields of entities, events, or the captures themselves
    const char* words;     // what is wrong, for people
    double threshold;      // 0 where the rule has none
    const char* unit;      // of the threshold, with its comparison: "percent or more"
    const char* why;
    const char* source;   // the manual, standard or practice behind it
    const char* redfish;  // the message that means the same; "" if there is none
};

std::span<const Rule> all_rules();

// The rule of that name; it must be there.
const Rule& rule(std::string_view name);

}  // namespace qvhost::findings
