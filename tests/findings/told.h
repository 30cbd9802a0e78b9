// Findings as lines of text, to be compared whole.
#pragma once

#include <string>
#include <vector>

#include "findings/collector.h"

namespace qvhost::findings {

// "critical drive_failed_no_redundancy:Z1 | Drive 8:1 of controller 0 | state Offln"
inline std::string told(const Finding& finding) {
    return std::string(word(finding.severity)) + " " + finding.id + " | " + finding.subject +
           " | " + finding.says;
}

inline std::vector<std::string> told(Collector& findings) {
    std::vector<std::string> lines;
    for (const auto& finding : findings.take()) lines.push_back(told(finding));
    return lines;
}

using Lines = std::vector<std::string>;

}  // namespace qvhost::findings
