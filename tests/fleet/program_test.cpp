// qvfleet from its command line.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "program.h"
#include "reports.h"

namespace test {
namespace {

class FleetProgramTest : public ProductTest {
protected:
    Outcome fleet(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), QV_FLEET);
        return run({.arguments = {}, .directory = dir(), .program = arguments});
    }
    std::filesystem::path bundle(const std::string& host) {
        return bundle_of(healthy_report(host, "2026-11-01T00:00:00Z"), dir(), host);
    }
};

TEST_F(FleetProgramTest, ImportsAndAnswers) {
    std::ofstream(dir() / "bad.zip") << "bad";
    const auto imported = fleet({"import", bundle("web1"), "bad.zip"});
    EXPECT_EQ(imported.exit, 3);
    EXPECT_NE(imported.out.find("web1, new host\n1 run imported, 0 there already, 1 skipped; "),
              std::string::npos)
        << imported.out;
    EXPECT_TRUE(imported.err.starts_with("qvfleet: bad.zip: it is damaged, or no bundle"))
        << imported.err;
    const auto status = fleet({"status", "--as-of", "2026-11-02", "--format", "csv"});
    EXPECT_EQ(status.out, "state,host,age,findings,worst\r\nok,web1,24 h,0,\"\"\r\n");
    const auto silent = fleet({"status", "--as-of", "2027-11-02", "--format", "jsonl"});
    EXPECT_EQ(silent.out,
              "{\"state\":\"ok, silent\",\"host\":\"web1\",\"age\":\"366 d\",\"findings\":\"0\","
              "\"worst\":\"\"}\n");
    EXPECT_EQ(
        fleet({"export", "netbox_devices", "--format", "csv"}).out,
        "name,manufacturer,device_type,serial,status\r\nweb1,Example,EX100,SN-web1,active\r\n");
    EXPECT_EQ(fleet({"query", "SELECT count(*) AS n FROM drives", "--format", "csv"}).out,
              "n\r\n2\r\n");
    EXPECT_EQ(fleet({"forget", "web1"}).out, "1 host forgotten\n");
    EXPECT_EQ(fleet({"query", "SELECT count(*) AS n FROM drives", "--format", "csv"}).out,
              "n\r\n0\r\n");
}

TEST_F(FleetProgramTest, SaysWhatCannotBe) {
    const struct {
        std::vector<std::string> arguments;
        int exit;
        const char* words;
    } kCases[] = {
        {{"status"}, 1, "qvfleet: fleet.sqlite: there is no such database\n"},
        {{"import", "missing.zip"}, 1, "qvfleet: missing.zip: No such file or directory"},
        {{"status", "--silent-after", "soon"},
         2,
         "qvfleet: --silent-after: \"soon\" is no time such as"},
        {{"status", "--as-of", "yesterday"},
         2,
         "qvfleet: --as-of: \"yesterday\" is no time such as"},
        {{"forget"}, 2, "qvfleet: forget: name a HOST, or give --before"},
        {{"nonsense"}, 2, "qvfleet: "},
        {{"import"}, 2, "qvfleet: BUNDLE is required"},
        {{"--db", "postgresql:///nothing?host=/nowhere", "status"}, 1, "qvfleet: "},
    };
    for (const auto& [arguments, exit, words] : kCases) {
        const auto outcome = fleet(arguments);
        EXPECT_EQ(outcome.exit, exit) << words;
        EXPECT_TRUE(outcome.err.starts_with(words)) << outcome.err;
    }
    ASSERT_EQ(fleet({"import", bundle("web1")}).exit, 0);
    EXPECT_EQ(fleet({"export", "nothing"}).exit, 1);
    EXPECT_EQ(fleet({"forget", "nobody"}).err, "qvfleet: there is no host \"nobody\"\n");
}

// Its replacements stay the same from run to run where they are kept in one map.
TEST_F(FleetProgramTest, KnowsAHostByWhatStandsForItsSerialNumber) {
    std::vector<std::string> import{"import"};
    for (const std::string time : {"2026-11-01", "2026-11-02"}) {
        const auto whole =
            bundle_of(healthy_report("web1", time + "T00:00:00Z"), dir(), "whole" + time);
        const auto report = (dir() / ("report" + time)).string();
        const auto redacted = (dir() / ("redacted" + time + ".tar.zst")).string();
        const auto opened = run({"open", whole.string(), "--output", report});
        ASSERT_EQ(opened.exit, 0) << opened.err;
        const auto packed = run({"bundle", report, "--redact", "all", "--map",
                                 (dir() / "map").string(), "--output", redacted});
        ASSERT_EQ(packed.exit, 0) << packed.err;
        import.push_back(redacted);
    }
    const auto imported = fleet(import);
    EXPECT_EQ(imported.exit, 0) << imported.err;
    EXPECT_NE(imported.out.find("2 runs imported, 0 there already, 0 skipped"), std::string::npos)
        << imported.out;
    EXPECT_EQ(fleet({"query", "SELECT count(*) AS n FROM hosts", "--format", "csv"}).out,
              "n\r\n1\r\n");
    const auto hosts = fleet({"export", "hosts", "--format", "csv"});
    EXPECT_EQ(hosts.exit, 0) << hosts.err;
    EXPECT_EQ(hosts.out.find("SN-web1"), std::string::npos) << hosts.out;
    EXPECT_NE(hosts.out.find(','), std::string::npos) << hosts.out;
}

TEST_F(FleetProgramTest, DemonstratesRecordedServers) {
    const auto samples = dir() / "samples";
    std::filesystem::create_directory(samples);
    for (const auto* name : {"x86_64-kp220-healthy", "x86_64-kp420-two-megaraid"})
        std::filesystem::create_directory_symlink(std::filesystem::path(QV_SAMPLES) / name,
                                                  samples / name);
    const auto demo = fleet({"demo"});
    EXPECT_EQ(demo.exit, 0) << demo.err;
    for (const auto* words :
         {"2 runs imported, 0 there already, 0 skipped", "status: the worst first", "kp220c",
          "failing_drives: ", "netbox_inventory_items: ", "EX420102"})
        EXPECT_NE(demo.out.find(words), std::string::npos) << words << "\n" << demo.out;
    EXPECT_LT(demo.out.find("critical"), demo.out.find("ok  "));
    EXPECT_FALSE(std::filesystem::exists(dir() / "fleet.sqlite"));
}

}  // namespace
}  // namespace test
