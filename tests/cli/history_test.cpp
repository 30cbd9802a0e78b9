// What the runs before add to a report: since when a finding is there, and counters that grow.
#include <sqlite3.h>

#include <ctime>
#include <nlohmann/json.hpp>

#include "report_under_test.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class History : public ReportTest {
protected:
    void SetUp() override {
        ReportTest::SetUp();
        fs::copy(fs::path(QV_SAMPLES) / "x86_64-kp420-two-megaraid", machine(),
                 fs::copy_options::recursive);
    }
    fs::path machine() const { return dir() / "machine"; }

    // Collects from the server, the first drive of which has so many media errors.
    nlohmann::json collect_with(int errors, const std::vector<std::string>& more = {}) {
        const auto file = machine() / "c0_drives.txt";
        auto text = read_file(file);
        const std::string key = "Media Error Count = ";
        const auto begin = text.find(key) + key.size();
        text.replace(begin, text.find('\n', begin) - begin, std::to_string(errors));
        fs::remove(file);
        write_file(file, text);
        std::vector<std::string> arguments{"replay", machine(), "--log-dir", log_dir(), "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        summary_ = outcome.out;
        return nlohmann::json::parse(read_file(log_dir() / "report" / "report.json"));
    }

    // The latest run was so long ago.
    void date(const std::string& started) {
        sqlite3* store = nullptr;
        ASSERT_EQ(sqlite3_open((log_dir() / "report" / "report.sqlite").c_str(), &store),
                  SQLITE_OK);
        const auto sql = "UPDATE qv_meta SET value = '" + started +
                         "' WHERE key = 'started'; UPDATE findings SET first_seen = '" + started +
                         "' WHERE first_seen LIKE '%Z'";
        EXPECT_EQ(sqlite3_exec(store, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(store);
    }

    static nlohmann::json finding(const nlohmann::json& report, const std::string& id) {
        for (const auto& one : report.at("findings")) {
            if (one.at("id") == id) return one;
        }
        return nullptr;
    }
    static std::string days_ago(int days) {
        const auto then = std::time(nullptr) - std::time_t{days} * 24 * 3600;
        std::tm parts{};
        ::gmtime_r(&then, &parts);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
        return text;
    }

    std::string summary_;
};

// The id of the finding on the drive whose errors change.
std::string drive_id(const nlohmann::json& report, const std::string& rule) {
    for (const auto& one : report.at("findings")) {
        if (one.at("rule") == rule) return one.at("id");
    }
    return "";
}

TEST_F(History, ACountThatStaysIsOldAndOneThatGrowsIsNews) {
    const auto first = collect_with(1);
    const auto id = drive_id(first, "drive_media_errors");
    ASSERT_NE(id, "");
    EXPECT_EQ(finding(first, id).at("first_seen"), nullptr) << "nobody knows";
    EXPECT_EQ(finding(first, id).at("growth"), nlohmann::json::array());
    EXPECT_EQ(summary_.find(", since "), std::string::npos) << summary_;

    const auto long_ago = days_ago(40), last_week = days_ago(7);
    date(long_ago);
    const auto second = collect_with(1);
    EXPECT_EQ(finding(second, id).at("first_seen"), long_ago);
    EXPECT_EQ(finding(second, id).at("growth"), nlohmann::json::array());
    EXPECT_EQ(finding(second, id).at("severity"), "notice");
    EXPECT_NE(summary_.find("1 media errors, none new for 30 days, since " + long_ago),
              std::string::npos)
        << summary_;
    EXPECT_NE(run({"explain", log_dir(), id}).out.find("  first seen    " + long_ago),
              std::string::npos);

    date(last_week);
    const auto third = collect_with(50);
    EXPECT_EQ(finding(third, id), nullptr);
    const auto grown = finding(third, drive_id(third, "drive_media_errors_grow"));
    ASSERT_NE(grown, nullptr);
    EXPECT_EQ(grown.at("severity"), "warning");
    EXPECT_EQ(grown.at("says"),
              "media errors grew from 1 to 50 since " + last_week + "; 50 media errors");
    EXPECT_EQ(grown.at("first_seen"), third.at("collection").at("started"));
    const nlohmann::json growth{
        {{"field", "media_errors"}, {"value_before", 1}, {"value_now", 50}, {"since", last_week}}};
    EXPECT_EQ(grown.at("growth"), growth);
    EXPECT_EQ(run({"query", log_dir(), "SELECT field, value_before, value_now FROM finding_growth",
                   "--format", "jsonl"})
                  .out,
              "{\"field\":\"media_errors\",\"value_before\":1,\"value_now\":50}\n");

    // The next run still knows of the month before; a judgement by other rules as well.
    const auto fourth = collect_with(50);
    EXPECT_EQ(finding(fourth, grown.at("id")).at("growth"), growth);
    EXPECT_EQ(finding(fourth, grown.at("id")).at("first_seen"), grown.at("first_seen"));
    write_file(dir() / "rules", "severity drive_media_errors_grow critical\n");
    const auto judged = nlohmann::json::parse(
        run({"check", log_dir(), "--rules", dir() / "rules", "--format", "json"}).out);
    EXPECT_EQ(finding(judged, grown.at("id")).at("severity"), "critical");
    EXPECT_EQ(finding(judged, grown.at("id")).at("first_seen"), grown.at("first_seen"));
}

// The run of yesterday knows it from the one of last month.
TEST_F(History, WhatStaysIsKnownFromRunToRun) {
    collect_with(1);
    const auto last_month = days_ago(31);
    date(last_month);
    collect_with(1);
    date(days_ago(1));
    for (const auto& run : fs::directory_iterator(log_dir() / "runs")) fs::remove_all(run.path());
    const auto third = collect_with(1);
    EXPECT_EQ(finding(third, drive_id(third, "drive_media_errors")).at("severity"), "notice");
    const auto sql = "SELECT DISTINCT since FROM unchanged_values WHERE field = 'media_errors'";
    EXPECT_EQ(run({"query", log_dir(), sql, "--format", "jsonl"}).out,
              "{\"since\":\"" + last_month + "\"}\n");
}

// A report of another machine, and one that is damaged, tell nothing.
TEST_F(History, AnotherMachinesRunsTellNothing) {
    const auto text = read_file(machine() / "dmidecode.txt");
    collect_with(1);
    date(days_ago(7));
    auto other = nlohmann::json::parse(read_file(machine() / "machine.json"));
    other["machine_id"] = "0123456789abcdef0123456789abcdef";
    other["host"] = "another";
    auto board = text;
    for (const std::string key : {"Serial Number: ", "UUID: "}) {
        for (auto at = board.find(key); at != std::string::npos; at = board.find(key, at + 1)) {
            auto& digit = board[board.find('\n', at) - 1];
            digit = digit == '7' ? '8' : '7';
        }
    }
    for (const char* name : {"machine.json", "dmidecode.txt"}) fs::remove(machine() / name);
    write_file(machine() / "machine.json", other.dump());
    write_file(machine() / "dmidecode.txt", board);
    auto report = collect_with(50);
    EXPECT_EQ(drive_id(report, "drive_media_errors_grow"), "");
    auto found = finding(report, drive_id(report, "drive_media_errors"));
    EXPECT_EQ(found.at("first_seen"), nullptr);

    date(days_ago(6));
    collect_with(50);
    for (const auto& run : fs::directory_iterator(log_dir() / "runs")) {
        fs::remove(run.path() / "report" / "report.sqlite");
        write_file(run.path() / "report" / "report.sqlite", "no store");
    }
    report = collect_with(60);
    EXPECT_NE(drive_id(report, "drive_media_errors_grow"), "") << "the latest one is whole";
}

}  // namespace

}  // namespace test
