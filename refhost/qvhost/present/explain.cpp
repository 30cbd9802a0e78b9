#include "qvhost/present/explain.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "findings/about.h"
#include "findings/advice.h"
#include "findings/rules.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/nearest.h"
#include "qvhost/base/site_rules.h"
#include "qvhost/finish/runs.h"
#include "qvhost/present/excerpt.h"
#include "qvhost/present/open_report.h"
#include "show/terminal.h"
#include "show/text_table.h"
#include "show/visible.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using findings::Finding;
using inventory::Event;
using Labelled = std::vector<std::pair<std::string, std::string>>;

constexpr std::int64_t kAround = 3;       // lines before and behind one of the evidence
constexpr std::size_t kMostPlaces = 20;   // whose lines are shown
constexpr std::size_t kWidestLine = 400;  // columns of a capture's line
constexpr std::size_t kLatestEvents = 3;  // that are told in full
constexpr const char* kIndent = "  ";

void print_findings(const std::vector<Finding>& all, const TerminalStyle& style) {
    std::vector<std::vector<std::string>> rows;
    for (const auto& one : all)
        rows.push_back({one.id, word(one.severity), one.subject + ": " + one.says});
    print_table(std::cout, {"Finding", "Severity", "What it says"}, rows, style);
}

const Finding& finding_named(const std::vector<Finding>& all, const std::string& id) {
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Finding& one) { return one.id == id; });
    if (found != all.end()) return *found;
    std::vector<std::string> ids;
    for (const auto& one : all) ids.push_back(one.id);
    throw std::runtime_error("the report has no finding \"" + one_line(id) + "\"" +
                             did_you_mean(id, ids));
}

void print(const char* title, const Labelled& told, const TerminalStyle& style) {
    Labelled lines;
    for (const auto& [label, text] : told) lines.emplace_back(kIndent + label, one_line(text));
    std::cout << '\n' << bold(title, style) << '\n';
    print_labelled(std::cout, lines, style);
}

// As the report was judged by it. A store may be of a version with other rules.
void print_rule(const Finding& finding, findings::Rules rules, const TerminalStyle& style) {
    const auto* const rule = rules.find(finding.rule);
    if (!rule)
        return print("Rule",
                     {
                         {finding.rule, "a rule that this version does not have"}
        },
                     style);
    Labelled lines{
        {"name",     rule->name                                                  },
        {"says",     std::string(rule->words) + " (" + word(rule->severity) + ")"},
        {"looks at", rule->looks_at                                              },
    };
    if (const auto threshold = threshold_text(*rule); !threshold.empty())
        lines.emplace_back("threshold", threshold);
    lines.emplace_back("why", rule->why);
    lines.emplace_back("source", rule->source);
    if (*rule->redfish) lines.emplace_back("Redfish", rule->redfish);
    print("Rule", lines, style);
}

void print_capture(const fs::path& log_dir, const std::string& capture,
                   const std::set<std::int64_t>& lines) {
    std::cout << kIndent << one_line(capture) << '\n';
    if (lines.empty()) return;
    const auto shown = excerpt(log_dir, capture, lines, kAround);
    if (!shown || shown->empty()) {
        std::cout << kIndent << kIndent << (shown ? "it has no such line" : "it cannot be read")
                  << '\n';
        return;
    }
    const auto width = std::to_string(shown->back().number).size();
    std::int64_t before = shown->front().number - 1;
    for (const auto& line : *shown) {
        if (line.number != before + 1) std::cout << kIndent << kIndent << "...\n";
        before = line.number;
        const auto number = std::to_string(line.number);
        std::cout << kIndent << (line.is_meant ? "> " : kIndent)
                  << std::string(width - number.size(), ' ') << number << " | "
                  << shortened(one_line(line.text), kWidestLine) << '\n';
    }
}

void print_evidence(const Finding& finding, const fs::path& log_dir, const TerminalStyle& style) {
    std::cout << '\n' << bold("Evidence", style) << '\n';
    if (finding.evidence.empty()) std::cout << kIndent << "none is named\n";
    std::vector<std::string> order;
    std::map<std::string, std::set<std::int64_t>> lines;
    const auto shown = std::min(finding.evidence.size(), kMostPlaces);
    for (std::size_t i = 0; i < shown; ++i) {
        const auto& [capture, line] = finding.evidence[i];
        if (!lines.contains(capture)) order.push_back(capture);
        auto& of_capture = lines[capture];
        if (line > 0) of_capture.insert(line);
    }
    for (const auto& capture : order) {
        if (log_dir.empty()) {
            for (const auto line : lines[capture])
                std::cout << kIndent << one_line(capture) << ", line " << line << '\n';
        } else {
            print_capture(log_dir, capture, lines[capture]);
        }
    }
    if (shown < finding.evidence.size())
        std::cout << kIndent << "and " << finding.evidence.size() - shown << " places more\n";
    if (log_dir.empty() && !order.empty())
        std::cout << kIndent << "(to see the lines name the directory of the report)\n";
}

// What the runs before say: "in 3 of 4; without a gap since 2026-11-01T02:00:00Z (runs/20261101T020000Z)".
std::string told_by_runs(const Finding& finding, const fs::path& log_dir) {
    std::size_t runs = 0, with = 0;
    bool is_unbroken = true;
    std::string since;
    for (const auto& run : earlier_runs(log_dir)) {
        try {
            const Store store(LogDir(run).store(), Store::Mode::read);
            const auto verdict = read_verdict(store);
            if (verdict.health.empty()) continue;
            ++runs;
            const bool has = std::any_of(verdict.findings.begin(), verdict.findings.end(),
                                         [&](const Finding& one) { return one.id == finding.id; });
            if (has) ++with;
            is_unbroken = is_unbroken && has;
            if (is_unbroken)
                since =
                    store.meta("started") + " (" + run.lexically_relative(log_dir).string() + ")";
        } catch (const std::runtime_error&) {
            // A report that is damaged tells nothing.
        }
    }
    if (runs == 0) return "there is none";
    auto text = "in " + std::to_string(with) + " of " + std::to_string(runs);
    if (since.empty()) return text + "; not in the one before";
    return text + "; without a gap since " + since;
}

std::string event_text(const Event& event) {
    return event.time.value_or("without a time") + "  " + event.source + ": " +
           (event.subject && event.text.find(*event.subject) == std::string::npos
                ? *event.subject + ": "
                : "") +
           event.text;
}

// Events about the same thing; of a finding that was made of events those that it names.
Labelled told_by_events(const Finding& finding, const Store& store) {
    const auto inventory = read_inventory(store);
    findings::EventsAbout is_about(inventory, finding.entities);
    std::size_t count = 0;
    std::optional<Event> first;
    std::vector<Event> latest;
    each_event(store, [&](const Event& event) {
        const bool is_named = std::find(finding.evidence.begin(), finding.evidence.end(),
                                        event.place) != finding.evidence.end();
        if (!is_named && !is_about(event)) return true;
        if (count++ == 0) first = event;
        latest.push_back(event);
        if (latest.size() > kLatestEvents) latest.erase(latest.begin());
        return true;
    });
    if (count == 0)
        return {
            {"events", "none tells of it"}
        };
    Labelled lines{
        {"events", std::to_string(count) + (count == 1 ? " tells of it" : " tell of it")}
    };
    if (count > kLatestEvents) lines.emplace_back("the first", event_text(*first));
    for (const auto& event : latest) lines.emplace_back("", event_text(event));
    return lines;
}

void print_history(const Finding& finding, const Store& store, const fs::path& log_dir,
                   const TerminalStyle& style) {
    Labelled lines{
        {"first seen", finding.first_seen.value_or("not known")}
    };
    for (const auto& one : finding.growth)
        lines.emplace_back(one.field, "grew from " + std::to_string(one.before) + " to " +
                                          std::to_string(one.now) + " since " + one.since);
    if (!log_dir.empty()) lines.emplace_back("earlier runs", told_by_runs(finding, log_dir));
    for (auto& line : told_by_events(finding, store)) lines.push_back(std::move(line));
    print("Since when", lines, style);
}

void print_advice(const Finding& finding, const TerminalStyle& style) {
    std::cout << '\n' << bold("What people do", style) << '\n';
    const auto advice = findings::advice_on(finding.rule);
    if (advice.empty()) std::cout << kIndent << "no source says\n";
    for (const auto& one : advice)
        std::cout << kIndent << one.words << "\n"
                  << kIndent << kIndent << "(" << one.source << ")\n";
}

}  // namespace

void explain_finding(const ExplainOptions& options) {
    const auto style = terminal_style(STDOUT_FILENO);
    const auto report = open_report(options.report);
    const auto verdict = read_verdict(report.store);
    if (verdict.health.empty())
        throw std::runtime_error(options.report.string() +
                                 ": the report holds no verdict; it is an older version's");
    if (options.finding.empty()) return print_findings(verdict.findings, style);
    const auto& finding = finding_named(verdict.findings, options.finding);
    const auto log_dir = fs::is_directory(options.report) ? options.report : fs::path();

    std::cout << bold(one_line(finding.id), style) << '\n';
    Labelled lines{
        {std::string(kIndent) + word(finding.severity),
         one_line(finding.subject + ": " + finding.says)}
    };
    if (finding.count > 1)
        lines.emplace_back(std::string(kIndent) + "counted",
                           std::to_string(finding.count) + " times");
    print_labelled(std::cout, lines, style);
    print_rule(finding, rules_of(report.store), style);
    print_evidence(finding, log_dir, style);
    print_history(finding, report.store, log_dir, style);
    print_advice(finding, style);
}

}  // namespace qvhost
