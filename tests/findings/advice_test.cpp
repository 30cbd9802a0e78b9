#include "findings/advice.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

#include "findings/rules.h"

namespace qvhost::findings {
namespace {

TEST(Advice, NamesARuleAndWhoGivesIt) {
    std::set<std::pair<std::string, std::string>> seen;
    for (const auto& one : all_advice()) {
        EXPECT_NO_THROW(rule(one.rule)) << one.rule;
        EXPECT_STRNE(one.source, "") << one.rule;
        EXPECT_TRUE(std::string(one.words).ends_with('.')) << one.words;
        EXPECT_TRUE(seen.emplace(one.rule, one.words).second) << one.rule << " says it twice";
    }
    EXPECT_GT(seen.size(), 40u);
}

TEST(Advice, OfARuleIsInItsOrder) {
    const auto advice = advice_on("drive_failed");
    ASSERT_EQ(advice.size(), 2u);
    EXPECT_TRUE(std::string(advice[0].words).starts_with("Light"));
    EXPECT_TRUE(std::string(advice[1].words).starts_with("See"));
    EXPECT_TRUE(advice_on("volume_offline").empty());
    EXPECT_TRUE(advice_on("no_such_rule").empty());
}

}  // namespace
}  // namespace qvhost::findings
