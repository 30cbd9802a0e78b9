#include "findings/rules_file.h"

#include <gtest/gtest.h>

#include <string>

#include "told.h"

namespace qvhost::findings {
namespace {

constexpr const char* kToday = "2026-11-21";

// "3: there is no rule ..."; empty: the text is right.
std::string problem_of(const std::string& text) {
    try {
        parse_rules(text, kToday);
    } catch (const RulesError& error) {
        return std::to_string(error.line) + ": " + error.what();
    }
    return "";
}

TEST(RulesFile, ChangesWhatItNames) {
    const auto rules = parse_rules(
        "# our site\r\n\r\n"
        "severity fan_warning notice\r\n"
        "  threshold\tdrive_wear  90.5  \n"
        "severity drive_media_errors critical",
        kToday);
    EXPECT_EQ(rules.rule("fan_warning").severity, Severity::notice);
    EXPECT_EQ(rules.rule("drive_wear").threshold, 90.5);
    EXPECT_EQ(rules.rule("drive_media_errors").severity, Severity::critical);
    EXPECT_EQ(rules.rule("drive_failed").severity, rule("drive_failed").severity);
    EXPECT_EQ(rule("fan_warning").severity, Severity::warning) << "the built-in rules stay";
    EXPECT_THROW(rules.rule("no_such_rule"), std::logic_error);
}

// What is acknowledged is a notice that says so, until its last day is over; all else stays.
TEST(RulesFile, AcknowledgesUntilADay) {
    const auto rules = parse_rules(
        "acknowledge self_test:sel until 2026-11-21 it is known\n"
        "acknowledge self_test:BMC2 until 2026-11-20 that was yesterday\n"
        "acknowledge self_test:BMC3 until 2028-02-29\n",
        kToday);
    Collector findings(rules);
    for (const char* key : {"sel", "BMC2", "BMC3"})
        findings.add({key, "BMC"}, "self_test", "it failed", {"a.txt", 1});
    EXPECT_EQ(
        told(findings),
        (Lines{"warning self_test:BMC2 | BMC | it failed",
               "notice self_test:sel | BMC | it failed; acknowledged until 2026-11-21: it is known",
               "notice self_test:BMC3 | BMC | it failed; acknowledged until 2028-02-29"}));
}

TEST(RulesFile, TellsWhoAcknowledgesWhatAndWhy) {
    const struct {
        const char* rest;  // behind the date
        Acknowledgement known;
    } rows[] = {
        {"", {"2027-01-31", "", ""}},
        {"ticket 7", {"2027-01-31", "", "ticket 7"}},
        {"by Jane Doe", {"2027-01-31", "Jane Doe", ""}},
        {"by Jane Doe: a new drive is ordered",
         {"2027-01-31", "Jane Doe", "a new drive is ordered"}},
        {" by  ops :  ticket: 7 ", {"2027-01-31", "ops", "ticket: 7"}},
        {"bypassed: by hand", {"2027-01-31", "", "bypassed: by hand"}},
    };
    for (const auto& row : rows) {
        const auto rules = parse_rules(
            std::string("acknowledge self_test:sel until 2027-01-31 ") + row.rest, kToday);
        Collector findings(rules);
        findings.add({"sel", "BMC"}, "self_test", "it failed", {"a.txt", 1});
        EXPECT_EQ(findings.take().at(0).acknowledged, row.known) << row.rest;
    }
    EXPECT_EQ(words_of({"2027-01-31", "Jane Doe", "a new drive is ordered"}),
              "acknowledged by Jane Doe until 2027-01-31: a new drive is ordered");
    EXPECT_EQ(words_of({"2027-01-31", "Jane Doe", ""}),
              "acknowledged by Jane Doe until 2027-01-31");
    Collector findings;
    findings.add({"sel", "BMC"}, "self_test", "it failed", {"a.txt", 1});
    EXPECT_EQ(findings.take().at(0).acknowledged, std::nullopt);
}

TEST(RulesFile, AnEventCanBeAcknowledged) {
    const auto rules = parse_rules("acknowledge event_pci:slot until 2027-01-01", kToday);
    Collector findings(rules);
    Finding finding;
    finding.id = "event_pci:slot";
    finding.severity = Severity::critical;
    findings.add(std::move(finding));
    EXPECT_EQ(findings.take().at(0).severity, Severity::notice);
}

TEST(RulesFile, RefusesWhatItDoesNotKnow) {
    const struct {
        const char* text;
        const char* problem;
    } rows[] = {
        {"", ""},
        {"# severity", ""},
        {"\n\nsevrity fan_warning notice",
         "3: \"sevrity\" is none of severity, threshold, acknowledge"},
        {"severity", "1: the rule is missing"},
        {"severity fan_wrning notice", "1: there is no rule \"fan_wrning\""},
        {"severity fan_warning", "1: the severity is missing"},
        {"severity fan_warning ok",
         "1: \"ok\" is no severity: critical, warning, unknown or notice"},
        {"severity fan_warning notice please", "1: there is more than expected: \"please\""},
        {"severity fan_warning notice\nseverity fan_warning warning",
         "2: \"severity fan_warning\" is said a second time"},
        {"threshold fan_warning 3", "1: the rule \"fan_warning\" has no threshold"},
        {"threshold drive_wear", "1: the threshold is missing"},
        {"threshold drive_wear 90%", "1: \"90%\" is no number from 0 on"},
        {"threshold drive_wear -1", "1: \"-1\" is no number from 0 on"},
        {"threshold drive_wear nan", "1: \"nan\" is no number from 0 on"},
        {"threshold drive_wear 1e999", "1: \"1e999\" is no number from 0 on"},
        {"acknowledge", "1: the id of a finding is missing"},
        {"acknowledge fan_warning until 2027-01-01",
         "1: \"fan_warning\" is no id of a finding, RULE:THING"},
        {"acknowledge fan:FAN1 until 2027-01-01", "1: there is no rule \"fan\""},
        {"acknowledge fan_warning:FAN1", "1: \"until\" is missing"},
        {"acknowledge fan_warning:FAN1 2027-01-01", "1: \"until\" and a date are expected"},
        {"acknowledge fan_warning:FAN1 until 2027-01-01 by",
         "1: who acknowledges it is missing behind \"by\""},
        {"acknowledge fan_warning:FAN1 until 2027-01-01 by : it is known",
         "1: who acknowledges it is missing behind \"by\""},
        {"acknowledge fan_warning:FAN1 until", "1: the date is missing"},
        {"acknowledge fan_warning:FAN1 until 2027-02-29",
         "1: \"2027-02-29\" is no date, YYYY-MM-DD"},
        {"acknowledge fan_warning:FAN1 until 1.1.2027", "1: \"1.1.2027\" is no date, YYYY-MM-DD"},
        {"acknowledge fan_warning:FAN1 until tomorrow", "1: \"tomorrow\" is no date, YYYY-MM-DD"},
    };
    for (const auto& row : rows) EXPECT_EQ(problem_of(row.text), row.problem) << row.text;
    EXPECT_EQ(problem_of(std::string("severity\0fan_warning notice", 28)).substr(0, 3), "1: ");
}

}  // namespace
}  // namespace qvhost::findings
