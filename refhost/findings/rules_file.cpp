#include "findings/rules_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iterator>
#include <set>

#include "inventory/text.h"

namespace qvhost::findings {

namespace {

using inventory::trimmed;

// Takes the next word off the line; empty: there is none.
std::string_view next_word(std::string_view& line) {
    line = trimmed(line);
    const auto word = line.substr(0, line.find_first_of(" \t"));
    line.remove_prefix(word.size());
    return word;
}

std::string in_quotes(std::string_view text) { return "\"" + std::string(text) + "\""; }

// "2027-01-31", a day that the calendar has.
bool is_date(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
    const auto number = [&](std::size_t at, std::size_t size) {
        unsigned value = 0;
        const auto part = text.substr(at, size);
        const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
        return error == std::errc() && end == part.data() + part.size() ? value : 0;
    };
    return std::chrono::year_month_day(std::chrono::year(static_cast<int>(number(0, 4))),
                                       std::chrono::month(number(5, 2)),
                                       std::chrono::day(number(8, 2)))
        .ok();
}

// One line of the file, without its first word.
struct Line {
    int number;
    std::string_view rest;

    [[noreturn]] void refuse(const std::string& what) const { throw RulesError(number, what); }

    std::string_view word(const char* what) {
        const auto word = next_word(rest);
        if (word.empty()) refuse(std::string(what) + " is missing");
        return word;
    }
    void end() {
        if (const auto more = trimmed(rest); !more.empty())
            refuse("there is more than expected: " + in_quotes(more));
    }
};

Rule& rule_named(Line& line, Rules& rules, std::string_view name) {
    auto* const found = rules.find(name);
    if (!found) line.refuse("there is no rule " + in_quotes(name));
    return *found;
}

void set_severity(Line& line, Rules& rules, std::string_view /*today*/) {
    auto& rule = rule_named(line, rules, line.word("the rule"));
    const auto name = line.word("the severity");
    const auto* const severity = std::find_if(std::begin(kSeverities), std::end(kSeverities),
                                              [&](Severity one) { return name == word(one); });
    if (severity == std::end(kSeverities))
        line.refuse(in_quotes(name) + " is no severity: critical, warning, unknown or notice");
    rule.severity = *severity;
    line.end();
}

void set_threshold(Line& line, Rules& rules, std::string_view /*today*/) {
    auto& rule = rule_named(line, rules, line.word("the rule"));
    if (*rule.compares == '\0')
        line.refuse("the rule " + in_quotes(rule.name) + " has no threshold");
    const auto text = line.word("the threshold");
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value) ||
        value < 0)
        line.refuse(in_quotes(text) + " is no number from 0 on");
    rule.threshold = value;
    line.end();
}

void acknowledge(Line& line, Rules& rules, std::string_view today) {
    const auto id = line.word("the id of a finding");
    const auto colon = id.find(':');
    if (colon == std::string_view::npos || colon + 1 == id.size())
        line.refuse(in_quotes(id) + " is no id of a finding, RULE:THING");
    rule_named(line, rules, id.substr(0, colon));
    if (line.word("\"until\"") != "until") line.refuse("\"until\" and a date are expected");
    const auto until = line.word("the date");
    if (!is_date(until)) line.refuse(in_quotes(until) + " is no date, YYYY-MM-DD");
    Acknowledgement known;
    known.until = until;
    auto rest = trimmed(line.rest);
    if (auto behind = rest; next_word(behind) == "by") {
        const auto end = std::min(behind.find(':'), behind.size());
        known.by = trimmed(behind.substr(0, end));
        if (known.by.empty()) line.refuse("who acknowledges it is missing behind \"by\"");
        rest = trimmed(behind.substr(std::min(end + 1, behind.size())));
    }
    known.why = rest;
    if (until >= today) rules.acknowledge(std::string(id), known);
}

struct Kind {
    std::string_view name;
    void (*apply)(Line& line, Rules& rules, std::string_view today);
};

constexpr auto kKinds = std::to_array<Kind>({
    {"severity",    set_severity },
    {"threshold",   set_threshold},
    {"acknowledge", acknowledge  },
});

}  // namespace

Rules parse_rules(std::string_view text, std::string_view today) {
    Rules rules;
    std::set<std::string> seen;  // "severity fan_warning"
    for (int number = 1; !text.empty(); ++number) {
        const auto end = std::min(text.find('\n'), text.size());
        auto rest = text.substr(0, end);
        if (rest.ends_with('\r')) rest.remove_suffix(1);
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto name = next_word(rest);
        if (name.empty() || name.starts_with('#')) continue;
        Line line{number, rest};
        const auto* const kind = std::find_if(kKinds.begin(), kKinds.end(),
                                              [&](const Kind& one) { return one.name == name; });
        if (kind == kKinds.end())
            line.refuse(in_quotes(name) + " is none of severity, threshold, acknowledge");
        auto copy = rest;
        if (const auto about = std::string(name) + " " + std::string(next_word(copy));
            !seen.insert(about).second)
            line.refuse(in_quotes(about) + " is said a second time");
        kind->apply(line, rules, today);
    }
    return rules;
}

}  // namespace qvhost::findings
