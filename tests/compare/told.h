// A difference as lines of text, to be compared whole.
#pragma once

#include <string>
#include <vector>

#include "compare/words.h"

namespace qvhost::compare {

using Lines = std::vector<std::string>;

inline Lines told(const Difference& difference) {
    Lines lines;
    if (difference.machines == Machines::two) lines.emplace_back("two machines");
    if (difference.is_backwards) lines.emplace_back("backwards");
    for (const auto& one : difference.health)
        lines.push_back("health " + std::string(word(one.subsystem)) + " " + word(one.from) +
                        " -> " + word(one.to));
    for (const auto& one : difference.changes) {
        const std::string trend =
            one.trend == Trend::none ? "" : std::string(word(one.trend)) + " ";
        lines.push_back(trend + one.subject + ": " + words_of(one));
    }
    for (const auto& one : difference.new_findings) lines.push_back("new " + one.id);
    for (const auto& one : difference.gone_findings) lines.push_back("gone " + one.id);
    for (const auto& [finding, from] : difference.other_severity)
        lines.push_back(finding.id + " " + word(from) + " -> " + word(finding.severity));
    for (const auto& one : difference.lacking_now)
        lines.push_back("lacking now " + std::string(word(one.subsystem)) + ": " + one.words);
    for (const auto& one : difference.lacking_then)
        lines.push_back("lacking then " + std::string(word(one.subsystem)) + ": " + one.words);
    for (const auto& one : difference.lacking_both)
        lines.push_back("lacking both " + std::string(word(one.subsystem)) + ": " + one.words);
    for (const auto& one : difference.not_now) lines.push_back("not now " + words_of(one));
    for (const auto& one : difference.not_then) lines.push_back("not then " + words_of(one));
    return lines;
}

}  // namespace qvhost::compare
