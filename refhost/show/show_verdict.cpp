#include "show/show_verdict.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "show/text_table.h"
#include "show/visible.h"

namespace qvhost {

namespace {

using findings::Finding;
using findings::Health;
using findings::Verdict;

using Labelled = std::vector<std::pair<std::string, std::string>>;

std::string filled(std::string text, std::size_t width) {
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text;
}

template <class Words>
std::size_t longest_word(const Words& words) {
    std::size_t longest = 0;
    for (const auto one : words) longest = std::max(longest, std::string(word(one)).size());
    return longest;
}

// "unknown   storage      no RAID controller was asked"
Labelled health_lines(std::vector<Health> health) {
    std::stable_sort(health.begin(), health.end(),
                     [](const Health& a, const Health& b) { return a.health < b.health; });
    const auto first = longest_word(findings::kHealthWords);
    const auto second = longest_word(findings::kSubsystems);
    Labelled lines;
    for (const auto& one : health) {
        std::string lacks;
        for (const auto& words : one.missing)
            lacks += (lacks.empty() ? "" : "; ") + one_line(words);
        lines.emplace_back(
            "  " + filled(word(one.health), first) + "  " + filled(word(one.subsystem), second),
            lacks);
    }
    return lines;
}

// "pdlist.txt:403, c0_showall.txt:90 and 2 more"
std::string places(const Finding& finding) {
    constexpr std::size_t kMostPlaces = 3;
    std::string text;
    std::size_t shown = 0;
    for (const auto& [capture, line] : finding.evidence) {
        if (shown++ == kMostPlaces) break;
        text += (text.empty() ? "" : ", ") + one_line(capture);
        if (line > 0) text += ":" + std::to_string(line);
    }
    if (finding.evidence.size() > kMostPlaces)
        text += " and " + std::to_string(finding.evidence.size() - kMostPlaces) + " more";
    return text;
}

std::string finding_text(const Finding& finding, const Verdict& verdict) {
    const auto subject = one_line(finding.subject);
    auto text = one_line(finding.says);
    if (!text.starts_with(subject + ":") && !text.starts_with(subject + ","))
        text = subject + ": " + text;
    if (finding.count > 1) text += " (x " + std::to_string(finding.count) + ")";
    if (finding.time)
        text += (finding.count > 1 ? ", last at " : ", at ") + one_line(*finding.time);
    if (const auto first = since(finding, verdict); !first.empty())
        text += ", since " + one_line(first);
    return text;
}

// Which capture and line say so stands below, where a terminal is read, and at the line's end elsewhere.
Labelled finding_lines(const Verdict& verdict, bool evidence_below) {
    const auto width = longest_word(findings::kSeverities);
    Labelled lines;
    for (const auto& one : verdict.findings) {
        const auto evidence = places(one);
        auto text = finding_text(one, verdict);
        if (!evidence.empty()) text += evidence_below ? "\n" + evidence : " (" + evidence + ")";
        lines.emplace_back("  " + filled(word(one.severity), width), text);
    }
    return lines;
}

// "Findings: 7 critical, 12 warning"
std::string headline(const std::vector<Finding>& findings) {
    std::string text;
    for (const auto severity : findings::kSeverities) {
        const auto count = std::count_if(findings.begin(), findings.end(), [&](const Finding& one) {
            return one.severity == severity;
        });
        if (count > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + word(severity);
    }
    return "Findings: " + (text.empty() ? "none" : text);
}

}  // namespace

void show_verdict(std::ostream& out, const Verdict& verdict, const TerminalStyle& style) {
    if (verdict.health.empty()) return;
    out << bold("Health", style) << '\n';
    print_labelled(out, health_lines(verdict.health), style);
    out << '\n' << bold(headline(verdict.findings), style) << '\n';
    print_labelled(out, finding_lines(verdict, style.terminal), style);
}

}  // namespace qvhost
