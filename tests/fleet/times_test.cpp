#include "fleet/times.h"

#include <gtest/gtest.h>

namespace qvhost::fleet {
namespace {

TEST(Times, AreRead) {
    const struct {
        const char* text;
        std::optional<Milliseconds> time;
    } kCases[] = {
        {"1999-12-31T23:59:59Z", {}},
        {"2000-01-01", 946684800000},
        {"2026-11-22T13:59:04Z", 1795355944000},
        {"2026-11-22T13:59:04.250Z", 1795355944250},
        {"2026-11-22T13:59:04", {}},
        {"2026-11-22 13:59:04Z", {}},
        {"2026-02-30T00:00:00Z", {}},
        {"2026-11-22T24:00:00Z", {}},
        {"2026-11-22T13:59:04.25Z", {}},
        {"9999-01-01T00:00:00Z", {}},
        {"2026-11-2", {}},
        {"", {}},
        {"+026-11-22T00:00:00Z", {}},
    };
    for (const auto& [text, time] : kCases) EXPECT_EQ(time_of(text), time) << text;
}

TEST(Times, AreWritten) {
    EXPECT_EQ(utc_text(1795355944250), "2026-11-22T13:59:04Z");
    EXPECT_EQ(utc_text(946684800000), "2000-01-01T00:00:00Z");
}

TEST(Times, HaveMonths) {
    const auto december = month_of(*time_of("2026-12-31T23:59:59Z"));
    EXPECT_EQ(december.name, "2026_12");
    EXPECT_EQ(december.begin, *time_of("2026-12-01"));
    EXPECT_EQ(december.end, *time_of("2027-01-01"));
}

TEST(Times, AreAges) {
    const struct {
        Milliseconds age;
        const char* text;
    } kCases[] = {
        {0, "0 s"},         {119'999, "119 s"},    {120'000, "2 min"},
        {7'200'000, "2 h"}, {172'799'999, "47 h"}, {172'800'000, "2 d"},
    };
    for (const auto& [age, text] : kCases) EXPECT_EQ(age_text(age), text);
}

}  // namespace
}  // namespace qvhost::fleet
