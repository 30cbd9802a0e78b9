#include "findings/rules.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace qvhost::findings {
namespace {

TEST(Rules, EachHasANameOfItsOwnAndSaysWhy) {
    std::set<std::string> names;
    for (const Rule& one : all_rules()) {
        EXPECT_TRUE(names.insert(one.name).second) << one.name;
        for (const char* text : {one.looks_at, one.words, one.why, one.source})
            EXPECT_STRNE(text, "") << one.name;
        const std::string compares = one.compares;
        EXPECT_EQ(one.threshold > 0 || compares.starts_with("more than {}"), !compares.empty())
            << one.name;
        EXPECT_EQ(compares.find("{}") != std::string::npos, !compares.empty()) << one.name;
        EXPECT_EQ(&rule(one.name), &one);
    }
    EXPECT_THROW(rule("no_such_rule"), std::logic_error);
}

TEST(Rules, AThresholdIsToldAsItCompares) {
    const auto text = [](double threshold, const char* compares) {
        Rule changed = rule("drive_wear");
        changed.threshold = threshold;
        changed.compares = compares;
        return threshold_text(changed);
    };
    EXPECT_EQ(text(0, "more than {}"), "more than 0");
    EXPECT_EQ(text(0.5, "{} hours or more"), "0.5 hours or more");
    EXPECT_EQ(text(7, "{} days (older: warning)"), "7 days (older: warning)");
    EXPECT_EQ(text(0, ""), "");
}

// What must wake somebody, whatever else changes.
TEST(Rules, WhatIsCritical) {
    for (const char* name :
         {"volume_offline", "volume_no_redundancy", "topology_offline", "topology_no_redundancy",
          "drive_failed_no_redundancy", "drive_predicted_no_redundancy", "drive_spare_low",
          "temperature_critical", "power_insufficient", "cooling_insufficient",
          "drive_bay_array_failed", "event_memory_error", "event_processor"})
        EXPECT_EQ(rule(name).severity, Severity::critical) << name;
}

// What is shown and colours nothing.
TEST(Rules, WhatIsANotice) {
    for (const char* name : {"volume_maintenance", "battery_maintenance", "drive_other_errors",
                             "drive_shielded", "drive_reallocated", "memory_corrected",
                             "event_memory_corrected", "event_threshold_past", "not_understood"})
        EXPECT_EQ(rule(name).severity, Severity::notice) << name;
}

}  // namespace
}  // namespace qvhost::findings
