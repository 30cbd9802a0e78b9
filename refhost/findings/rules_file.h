// A site's own rules: what it finds more or less serious than the rules that are built in, and what it
// knows of already. One line each:
//     # comment
//     severity     fan_warning notice
//     threshold    drive_wear 90
//     acknowledge  drive_media_errors:ZA1B2C3D until 2027-01-31 by Jane Doe: a new drive is ordered
// Names of rules and the units of their thresholds are in docs/findings.md; the ids are those of the findings.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "findings/rules.h"

namespace qvhost::findings {

// A line that is none of the above.
struct RulesError : std::runtime_error {
    RulesError(int at, const std::string& what) : std::runtime_error(what), line(at) {}
    int line;  // counted from 1
};

// `today` is a date, "2026-11-21": an acknowledgement holds on its last day and not after it. Throws
// RulesError for the first line that is wrong.
Rules parse_rules(std::string_view text, std::string_view today);

}  // namespace qvhost::findings
