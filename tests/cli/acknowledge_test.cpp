// What a site's rules say when a server is collected is in every view of its report.
#include <nlohmann/json.hpp>

#include "report_under_test.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class Acknowledge : public ReportTest {
protected:
    Outcome replay_with(const std::string& rules) {
        write_file(rules_file(), rules);
        return run({"replay", fs::path(QV_SAMPLES) / "x86_64-kp420-two-megaraid", "--log-dir",
                    log_dir(), "--quiet", "--rules", rules_file()});
    }
    fs::path rules_file() const { return dir() / "site.rules"; }

    nlohmann::json findings() {
        const auto text = run({"export", log_dir(), "--format", "json"}).out;
        return nlohmann::json::parse(text).at("findings");
    }
};

TEST_F(Acknowledge, IsToldByEveryView) {
    ASSERT_EQ(replay_with("").exit, 0);
    const auto before = findings();
    const auto first = before.at(0);
    ASSERT_EQ(first.at("severity"), "critical");
    EXPECT_EQ(first.at("acknowledged"), nullptr);
    const std::string id = first.at("id");
    const std::string rule = "acknowledge " + id + " until 2999-12-31 by Jane Doe: ticket 7\n";
    const std::string words = "; acknowledged by Jane Doe until 2999-12-31: ticket 7";

    const auto outcome = replay_with(rule);
    ASSERT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_NE(outcome.out.find(words), std::string::npos) << outcome.out;
    const auto after = findings();
    ASSERT_EQ(after.size(), before.size()) << "it is shown, and all others are";
    for (const auto& one : after) {
        if (one.at("id") != id) {
            EXPECT_EQ(one.at("acknowledged"), nullptr);
            continue;
        }
        EXPECT_EQ(one.at("severity"), "notice");
        EXPECT_EQ(one.at("says"), first.at("says").get<std::string>() + words);
        EXPECT_EQ(
            one.at("acknowledged"),
            (nlohmann::json{{"until", "2999-12-31"}, {"by", "Jane Doe"}, {"why", "ticket 7"}}));
    }

    EXPECT_NE(run({"show", log_dir()}).out.find(words), std::string::npos);
    const auto checked = run({"check", log_dir()});
    EXPECT_NE(checked.out.find(words), std::string::npos) << checked.out;
    EXPECT_NE(lines_of(checked.out).at(0).find(" (1 acknowledged) | "), std::string::npos);
    EXPECT_NE(run({"check", log_dir(), "--format", "checkmk"}).out.find(words), std::string::npos);
    EXPECT_NE(run({"export", log_dir(), "--format", "prometheus"})
                  .out.find("qvhost_findings_acknowledged{subsystem=\"storage\"} 1\n"),
              std::string::npos);
    EXPECT_EQ(run({"query", log_dir(),
                   "SELECT acknowledged_until, acknowledged_by, acknowledged_why FROM findings "
                   "WHERE acknowledged_until IS NOT NULL",
                   "--format", "jsonl"})
                  .out,
              "{\"acknowledged_until\":\"2999-12-31\",\"acknowledged_by\":\"Jane Doe\","
              "\"acknowledged_why\":\"ticket 7\"}\n");
    EXPECT_NE(run({"export", log_dir(), "--format", "csv", "--table", "findings"})
                  .out.find("2999-12-31,Jane Doe,ticket 7"),
              std::string::npos);
}

TEST_F(Acknowledge, AWrongRuleStopsBeforeAnythingIsCollected) {
    const auto outcome = replay_with("severity fan_warning notice\nacknowledge it\n");
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_EQ(outcome.err, "qvhost: " + rules_file().string() +
                               ", line 2: \"it\" is no id of a finding, RULE:THING\n");
    EXPECT_FALSE(fs::exists(log_dir()));

    fs::remove(rules_file());
    const auto missing = run({"replay", fs::path(QV_SAMPLES) / "x86_64-virtual-machine",
                              "--log-dir", log_dir(), "--quiet", "--rules", rules_file()});
    EXPECT_EQ(missing.exit, 1);
    EXPECT_EQ(missing.err, "qvhost: " + rules_file().string() + ": No such file or directory\n");
}

}  // namespace

}  // namespace test
