// The table of rules: what is looked at, how bad it is, and why. docs/findings.md is made of it.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "findings/finding.h"

namespace qvhost::findings {

// What earlier runs and logs tell within so many days is news: a counter that grew, an event.
inline constexpr int kNewsDays = 30;

struct Rule {
    const char* name;
    Subsystem subsystem;
    Severity severity;
    const char* looks_at;  // fields of entities, events, or the captures themselves
    const char* words;     // what is wrong, for people
    double threshold;
    // "{} percent or more", the threshold at "{}"; "" where the rule has none.
    const char* compares;
    const char* why;
    const char* source;   // the manual, standard or practice behind it
    const char* redfish;  // the message that means the same; "" if there is none
};

// "80 percent or more"; "" where the rule has none.
std::string threshold_text(const Rule& rule);

std::span<const Rule> all_rules();

// The rule of that name as it is built in; it must be there.
const Rule& rule(std::string_view name);

// The rules that a judgement goes by: those that are built in, changed as a site wants them.
class Rules {
public:
    Rules();

    // The rule of that name; it must be there.
    const Rule& rule(std::string_view name) const;
    Rule* find(std::string_view name);  // null: there is none

    // The finding of this id is known to those who look after the server: it is shown as a notice that
    // says so.
    void acknowledge(const std::string& finding_id, const Acknowledgement& acknowledgement);

    // Null: nobody knows of it.
    const Acknowledgement* acknowledged(const std::string& finding_id) const;

private:
    std::vector<Rule> rules_;
    std::map<std::string, Acknowledgement> acknowledged_;
};

const Rules& built_in_rules();

}  // namespace qvhost::findings
