#include "findings/judge.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>

#include "findings/chassis.h"
#include "findings/collector.h"
#include "findings/history.h"
#include "findings/sensors.h"
#include "findings/storage.h"
#include "findings/storage_past.h"

namespace qvhost::findings {

namespace {

std::optional<double> seconds_of(const std::string& time) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (std::sscanf(time.c_str(), "%d-%u-%uT%d:%d:%d", &year, &month, &day, &hour, &minute,
                    &second) != 6)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (!date.ok()) return std::nullopt;
    return static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count()) * 86400.0 +
           hour * 3600.0 + minute * 60.0 + second;
}

// A whole number of quarter hours apart is another time zone and no wrong clock.
void judge_clocks(const inventory::Inventory& inventory, Collector& findings) {
    for (const auto& clock : inventory.clocks) {
        if (!clock.time || !clock.system_time) continue;
        const auto its = seconds_of(*clock.time);
        const auto ours = seconds_of(*clock.system_time);
        if (!its || !ours) continue;
        constexpr double kQuarter = 900;
        constexpr double kWidestZone = 14 * 3600;
        const double apart = std::abs(*its - *ours);
        const double off = apart <= kWidestZone ? std::abs(std::remainder(apart, kQuarter)) : apart;
        if (off < findings.rule("clock_wrong").threshold) continue;
        findings.add({clock.source, "Clock of " + clock.source}, "clock_wrong",
                     "it says " + *clock.time + " where this system's says " + *clock.system_time,
                     clock.place);
    }
}

void judge_bmc_answers(const std::vector<BmcAnswer>& answers, Collector& findings) {
    for (const auto& [seconds, place] : answers) {
        if (seconds < findings.rule("bmc_slow").threshold) continue;
        char text[32];
        std::snprintf(text, sizeof text, "%.1f", seconds);
        findings.add({"answers", "BMC"}, "bmc_slow",
                     std::string("it took ") + text + " seconds to say who it is", place);
    }
}

void tell_what_was_not_read(const inventory::Survey& survey, Collector& findings) {
    for (const auto& capture : survey.captures) {
        if (is_not_installed(capture)) {
            findings.add({capture.tool, capture.tool}, "tool_missing", "not installed",
                         {capture.name, 0});
        } else if (const auto reason = why_not_whole(capture); !reason.empty()) {
            std::int64_t line = 0;
            if (!capture.how.errors.empty()) {
                line = capture.how.errors.front().line;
            } else if (!capture.how.gaps.empty()) {
                line = capture.how.gaps.front().line;
            }
            findings.add({capture.name, capture.name}, "not_read", reason, {capture.name, line});
        }
        if (capture.how.not_understood > 0)
            findings.add({capture.name, capture.name}, "not_understood",
                         std::to_string(capture.how.not_understood) +
                             (capture.how.not_understood == 1 ? " line" : " lines") +
                             " not understood",
                         {capture.name, capture.how.first_not_understood});
    }
}

}  // namespace

Verdict judge(const inventory::Survey& survey, EventJudge& events,
              const Circumstances& circumstances, const Rules& rules) {
    Collector findings(rules);
    const auto redundancy = judge_storage(survey.inventory, circumstances.past, findings);
    judge_sensors(survey.inventory, findings);
    judge_power_supplies(survey.inventory, findings);
    judge_bmc(survey.inventory, findings);
    judge_clocks(survey.inventory, findings);
    events.finish(survey.inventory, circumstances.now, findings);
    tell_what_was_not_read(survey, findings);
    judge_storage_past(survey.inventory, circumstances.past, redundancy, findings);
    judge_bmc_answers(circumstances.bmc_answers, findings);
    judge_chassis(survey.inventory, findings);

    Verdict verdict;
    verdict.findings = findings.take();
    verdict.unchanged = circumstances.past.unchanged;
    add_growth(circumstances.past.grown, verdict.findings);
    for (auto& finding : verdict.findings) {
        if (!finding.first_seen) finding.first_seen = events.began(finding.entities);
    }
    verdict.health = judge_health(survey, circumstances, verdict.findings);
    return verdict;
}

}  // namespace qvhost::findings
