// "qvhost check": the words and exit statuses of a monitoring plug-in, for every verdict that a report can
// hold, and for reports that hold none.
#include <algorithm>
#include <ctime>
#include <limits>
#include <nlohmann/json.hpp>

#include "report_under_test.h"
#include "show/visible.h"
#include "store/store.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using qvhost::findings::Finding;
using qvhost::findings::Health;
using qvhost::findings::HealthWord;
using qvhost::findings::kSubsystems;
using qvhost::findings::Severity;
using qvhost::findings::Subsystem;
using qvhost::findings::Verdict;
using qvhost::inventory::Inventory;
using qvhost::inventory::Sensor;

std::string utc(std::time_t seconds) {
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

// Every subsystem has one health.
Verdict all(HealthWord health) {
    Verdict verdict;
    for (const auto subsystem : kSubsystems) verdict.health.push_back({subsystem, health, {}, {}});
    return verdict;
}

Health& of(Verdict& verdict, Subsystem subsystem) {
    return verdict.health[static_cast<std::size_t>(subsystem)];
}

Finding finding(Severity severity, Subsystem subsystem, const std::string& subject,
                const std::string& says) {
    return {"rule:" + subject, "rule", severity, subsystem, subject, says, {}, 1, {{"a.txt", 7}}};
}

Sensor sensor(const std::string& name, const std::string& kind, double reading) {
    Sensor one;
    one.name = name;
    one.kind = kind;
    one.reading = reading;
    return one;
}

bool is_utf8(const std::string& text) {
    try {
        return !nlohmann::json(text).dump().empty();
    } catch (const nlohmann::json::exception&) {
        return false;
    }
}

class Check : public ReportTest {
protected:
    fs::path store_of(const Verdict& verdict, const Inventory& inventory = {},
                      const std::string& finished = utc(std::time(nullptr))) {
        const auto file = dir() / ("store" + std::to_string(++stores_) + ".sqlite");
        qvhost::Store store(file, qvhost::Store::Mode::create);
        store.set_meta("status", "complete");
        if (!finished.empty()) store.set_meta("finished", finished);
        qvhost::write_inventory(store, inventory);
        qvhost::write_verdict(store, verdict);
        store.commit();
        return file;
    }
    Outcome check(const fs::path& report, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"check", report};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.err, "");
        EXPECT_FALSE(lines_of(outcome.out).empty());
        return outcome;
    }
    // The first line without the age, which is another each time, and the exit status.
    std::string said(const fs::path& report, const std::vector<std::string>& more = {}) {
        const auto outcome = check(report, more);
        return std::to_string(outcome.exit) + " " + without_age(lines_of(outcome.out).at(0));
    }
    static std::string without_age(std::string text) {
        const auto age = text.find(" age=");
        if (age != std::string::npos) text.erase(age, text.find('s', age) + 1 - age);
        return text;
    }

private:
    int stores_ = 0;
};

const std::string kNone = " | critical=0 warning=0 unknown=0 notice=0";

TEST_F(Check, EveryOverallWordHasItsStatus) {
    EXPECT_EQ(said(store_of(all(HealthWord::ok))),
              "0 OK: temperature, cooling, power, memory, processor, storage, bmc, system, "
              "collection ok" +
                  kNone);
    EXPECT_EQ(said(store_of(all(HealthWord::absent))),
              "0 OK: nothing is there to be judged" + kNone);

    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::bmc) = {
        Subsystem::bmc, HealthWord::unknown, {}, {"mcinfo.txt: not there"}};
    EXPECT_EQ(said(store_of(verdict)),
              "3 UNKNOWN: bmc cannot be told: mcinfo.txt: not there" + kNone);

    of(verdict, Subsystem::cooling).health = HealthWord::warning;
    verdict.findings.push_back(
        finding(Severity::warning, Subsystem::cooling, "Sensor FAN1", "status nc"));
    EXPECT_EQ(said(store_of(verdict)),
              "1 WARNING: Sensor FAN1: status nc | critical=0 warning=1 unknown=0 notice=0");

    of(verdict, Subsystem::storage).health = HealthWord::critical;
    const auto offline = finding(Severity::critical, Subsystem::storage, "Volume 0", "state OfLn");
    verdict.findings.insert(verdict.findings.begin(), {offline, offline});
    verdict.findings[0].count = 3;
    EXPECT_EQ(said(store_of(verdict)),
              "2 CRITICAL: Volume 0: state OfLn (x 3), and 1 more"
              " | critical=2 warning=1 unknown=0 notice=0");
}

// critical, warning, unknown, ok; absent is ok.
TEST_F(Check, TheWorstWins) {
    const std::vector<std::pair<HealthWord, std::string>> order{
        {HealthWord::critical, "2 CRITICAL: "}, {HealthWord::warning, "1 WARNING: "},
        {HealthWord::unknown, "3 UNKNOWN: "},   {HealthWord::ok, "0 OK: "},
        {HealthWord::absent, "0 OK: "},
    };
    for (std::size_t worse = 0; worse < order.size(); ++worse) {
        for (std::size_t other = worse; other < order.size(); ++other) {
            for (const auto place : {Subsystem::temperature, Subsystem::collection}) {
                auto verdict = all(order[other].first);
                of(verdict, place).health = order[worse].first;
                const auto line = said(store_of(verdict));
                EXPECT_TRUE(line.starts_with(order[worse].second)) << line;
            }
        }
    }
}

TEST_F(Check, DetailsFollowTheFirstLine) {
    auto verdict = all(HealthWord::absent);
    of(verdict, Subsystem::power) = {
        Subsystem::power, HealthWord::unknown, {}, {"psu.txt", "the sensors"}};
    of(verdict, Subsystem::storage) = {Subsystem::storage, HealthWord::ok, {"c0_show.txt"}, {}};
    verdict.findings.push_back(
        finding(Severity::notice, Subsystem::storage, "Controller 0", "patrol read runs"));
    verdict.findings[0].count = 2;
    auto lines = lines_of(check(store_of(verdict)).out);
    lines.erase(lines.begin());
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "temperature: absent",
                         "cooling: absent",
                         "power: unknown",
                         "  missing: psu.txt",
                         "  missing: the sensors",
                         "memory: absent",
                         "processor: absent",
                         "storage: ok",
                         "bmc: absent",
                         "system: absent",
                         "collection: absent",
                         "[notice] Controller 0: patrol read runs (x 2) (a.txt, line 7)",
                     }));
}

// What one of them says is not said of another.
TEST_F(Check, OneSubsystemIsAsked) {
    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::storage).health = HealthWord::critical;
    of(verdict, Subsystem::power).health = HealthWord::unknown;
    verdict.findings.push_back(finding(Severity::critical, Subsystem::storage, "Volume 0", "OfLn"));
    const auto report = store_of(verdict);
    EXPECT_EQ(said(report, {"--subsystem", "memory"}), "0 OK: memory ok" + kNone);
    EXPECT_EQ(said(report, {"--subsystem", "memory,power"}),
              "3 UNKNOWN: power cannot be told" + kNone);
    EXPECT_EQ(said(report, {"--subsystem", "memory", "--subsystem", "storage"}),
              "2 CRITICAL: Volume 0: OfLn | critical=1 warning=0 unknown=0 notice=0");
    const auto lines = lines_of(check(report, {"--subsystem", "memory"}).out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], "memory: ok");
}

// Nobody may take it for ok.
TEST_F(Check, ASubsystemThatTheReportLeavesOutIsUnknown) {
    Verdict verdict;
    verdict.health.push_back({Subsystem::memory, HealthWord::ok, {"dmidecode.txt"}, {}});
    const auto report = store_of(verdict);
    EXPECT_EQ(said(report, {"--subsystem", "memory"}), "0 OK: memory ok" + kNone);
    EXPECT_EQ(said(report, {"--subsystem", "storage"}),
              "3 UNKNOWN: storage cannot be told: the report says nothing" + kNone);
    EXPECT_EQ(said(report),
              "3 UNKNOWN: temperature cannot be told: the report says nothing, and 7 "
              "more" +
                  kNone);
}

// A store that another program made.
TEST_F(Check, HealthThatNoFindingExplainsIsTold) {
    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::storage).health = HealthWord::critical;
    EXPECT_EQ(said(store_of(verdict)), "2 CRITICAL: storage is critical" + kNone);
}

TEST_F(Check, UnknownIsSaidAsWished) {
    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::power) = {Subsystem::power, HealthWord::unknown, {}, {"psu.txt"}};
    const auto report = store_of(verdict);
    const auto text = "power cannot be told: psu.txt" + kNone;
    EXPECT_EQ(said(report, {"--unknown-as", "unknown"}), "3 UNKNOWN: " + text);
    EXPECT_EQ(said(report, {"--unknown-as", "warning"}), "1 WARNING: " + text);
    EXPECT_EQ(said(report, {"--unknown-as", "ok"}), "0 OK: " + text);

    of(verdict, Subsystem::storage).health = HealthWord::critical;
    EXPECT_EQ(check(store_of(verdict), {"--unknown-as", "warning"}).exit, 2);
    EXPECT_EQ(check(store_of(verdict), {"--unknown-as", "ok"}).exit, 2);
}

TEST_F(Check, AnOldReportIsUnknown) {
    const auto report = store_of(all(HealthWord::ok), {}, utc(std::time(nullptr) - 7200));
    for (const char* age : {"1h", "119m", "7100s", "0s"}) {
        SCOPED_TRACE(age);
        const auto outcome = check(report, {"--max-age", age});
        EXPECT_EQ(outcome.exit, 3);
        EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: the report is 72")) << outcome.out;
        EXPECT_TRUE(outcome.out.ends_with(" s old\n")) << outcome.out;
    }
    for (const char* age : {"3h", "1d", "130m", "7300"}) {
        EXPECT_EQ(check(report, {"--max-age", age}).exit, 0) << age;
    }
    for (const char* finished : {"", "yesterday", "2026-11-21T01:20:40Z, or so"}) {
        EXPECT_EQ(said(store_of(all(HealthWord::ok), {}, finished), {"--max-age", "1d"}),
                  "3 UNKNOWN: the report does not say when it was finished");
    }
    // Of a clock that went wrong.
    EXPECT_EQ(
        check(store_of(all(HealthWord::ok), {}, "2999-01-01T00:00:00Z"), {"--max-age", "1s"}).exit,
        0);
}

TEST_F(Check, PerformanceDataTellsTheHighestTemperature) {
    Inventory inventory;
    inventory.sensors = {sensor("CPU", "temperature", 41.5), sensor("Inlet", "temperature", -3),
                         sensor("FAN", "fan", 9000), sensor("T", "temperature", 38)};
    const auto line = lines_of(check(store_of(all(HealthWord::ok), inventory)).out).at(0);
    const auto data = line.substr(line.find(" | "));
    EXPECT_TRUE(data.starts_with(kNone + " age=")) << line;
    EXPECT_TRUE(data.ends_with("s temperature_max=41.5")) << line;

    inventory.sensors = {sensor("CPU", "temperature", -7)};
    EXPECT_TRUE(said(store_of(all(HealthWord::ok), inventory)).ends_with(" temperature_max=-7"));
}

TEST_F(Check, PerformanceDataOfSensorsHasTheirLimits) {
    Inventory inventory;
    inventory.sensors = {sensor("CPU 'A' = x", "temperature", 41.25), sensor("FAN|1", "fan", 9000),
                         sensor("P12V", "voltage", 12.125), sensor("X", "temperature", 1)};
    inventory.sensors[0].unc = 80;
    inventory.sensors[0].uc = 90.5;
    inventory.sensors[2].uc = std::numeric_limits<double>::infinity();
    inventory.sensors[3].reading = std::numeric_limits<double>::infinity();
    inventory.sensors.resize(5);
    inventory.sensors[4].name = "discrete";
    EXPECT_EQ(said(store_of(all(HealthWord::absent), inventory), {"--perfdata", "sensors"}),
              "0 OK: nothing is there to be judged" + kNone +
                  " temperature_max=41.25 'CPU ''A'' _ x'=41.25;80;90.5 'FAN/1'=9000;; "
                  "'P12V'=12.125;;");
}

// In a line of 1,024 bytes a character of several bytes stands whole or not at all.
TEST_F(Check, TheFirstLineIsNeverTooLong) {
    Inventory inventory;
    for (int i = 0; i < 200; ++i)
        inventory.sensors.push_back(sensor("Fühler '" + std::to_string(i), "temperature", i));
    for (const std::string& piece : {"x"s, "ä"s, "€"s, "😀"s, "\xff"s, "\n."s, "|"s}) {
        for (int shift = 0; shift < 4; ++shift) {
            SCOPED_TRACE(piece + std::to_string(shift));
            std::string text(static_cast<std::size_t>(shift), '.');
            while (text.size() < 5000) text += piece;
            auto verdict = all(HealthWord::critical);
            verdict.findings.push_back(finding(Severity::critical, Subsystem::storage, text, text));
            const auto report = store_of(verdict, inventory);
            for (const char* perfdata : {"usual", "sensors"}) {
                const auto outcome = check(report, {"--perfdata", perfdata});
                EXPECT_EQ(outcome.exit, 2);
                const auto line = lines_of(outcome.out).at(0);
                EXPECT_LE(line.size() + 1, 1024u);
                EXPECT_GT(line.size(), 1000u) << "room is left";
                EXPECT_TRUE(is_utf8(line)) << line;
                EXPECT_NE(line.find("... | critical=1 "), std::string::npos) << line;
                // Each sensor stands whole.
                EXPECT_TRUE(line.ends_with(perfdata == "sensors"s ? ";;" : "=199")) << line;
            }
        }
    }
}

// Nothing that a tool printed ends the line, begins performance data or reaches the terminal.
TEST_F(Check, TextsAreInert) {
    const std::string bad = "a\x1b]0;title\x07 | evil=1\nOK: all is well\r\n\0\xff\u202e\u0085"s;
    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::storage).health = HealthWord::warning;
    of(verdict, Subsystem::power) = {Subsystem::power, HealthWord::unknown, {bad}, {bad}};
    verdict.findings.push_back(finding(Severity::warning, Subsystem::storage, bad, bad));
    verdict.findings[0].evidence[0].capture = bad;
    Inventory inventory;
    inventory.sensors = {sensor(bad, "fan", 1)};
    const auto report = store_of(verdict, inventory);
    const std::string inert =
        "a\\x1b]0;title\\x07 / evil=1\\x0aOK: all is well\\x0d\\x0a\\x00\\xff\\u202e\\u0085";

    const auto text = check(report, {"--perfdata", "sensors"});
    EXPECT_EQ(text.exit, 1);
    const auto lines = lines_of(text.out);
    ASSERT_EQ(lines.size(), 12u) << text.out;
    EXPECT_TRUE(lines[0].starts_with("WARNING: " + inert + ": " + inert + " | critical=0 "))
        << lines[0];
    EXPECT_EQ(std::count(lines[0].begin(), lines[0].end(), '|'), 1);
    EXPECT_EQ(lines[4], "  missing: " + inert);
    EXPECT_EQ(lines[11], "[warning] " + inert + ": " + inert + " (" + inert + ", line 7)");

    const auto checkmk = check(report, {"--format", "checkmk"});
    ASSERT_EQ(lines_of(checkmk.out).size(), 9u) << checkmk.out;
    for (const auto& output : {text.out, checkmk.out}) {
        EXPECT_TRUE(is_utf8(output));
        EXPECT_EQ(output, qvhost::visible(output) + "\n");
    }
    const auto json = nlohmann::json::parse(check(report, {"--format", "json"}).out);
    EXPECT_EQ(json["findings"][0]["subject"],
              "a\x1b]0;title\x07 | evil=1\nOK: all is well\r\n\0\ufffd\u202e\u0085"s);
}

TEST_F(Check, JsonHasHealthAndFindings) {
    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::temperature).judged_by = {"sensorinfo.txt"};
    of(verdict, Subsystem::storage).health = HealthWord::warning;
    verdict.findings.push_back(finding(Severity::warning, Subsystem::storage, "Drive 8:1", "UBad"));
    verdict.findings[0].time = "2026-11-20T07:30:05";
    const auto report = store_of(verdict);
    const auto outcome = check(report, {"--format", "json"});
    EXPECT_EQ(outcome.exit, 1);
    const auto json = nlohmann::ordered_json::parse(outcome.out);
    EXPECT_EQ(json.size(), 2u);
    EXPECT_EQ(json["health"].size(), 9u);
    EXPECT_EQ(json["health"][0].dump(), R"({"subsystem":"temperature","health":"ok",)"
                                        R"("judged_by":["sensorinfo.txt"],"missing":[]})");
    EXPECT_EQ(
        json["findings"].dump(),
        R"([{"id":"rule:Drive 8:1","rule":"rule","severity":"warning","subsystem":"storage",)"
        R"("subject":"Drive 8:1","says":"UBad","time":"2026-11-20T07:30:05","count":1,)"
        R"("evidence":[{"capture":"a.txt","line":7}],"first_seen":null,"growth":[],"acknowledged":null}])");
    const auto one =
        nlohmann::json::parse(check(report, {"--format", "json", "--subsystem", "power"}).out);
    EXPECT_EQ(one["health"].size(), 1u);
    EXPECT_EQ(one["findings"].size(), 0u);
}

TEST_F(Check, CheckmkHasALineASubsystem) {
    auto verdict = all(HealthWord::ok);
    of(verdict, Subsystem::temperature).health = HealthWord::critical;
    of(verdict, Subsystem::cooling).health = HealthWord::warning;
    of(verdict, Subsystem::power) = {Subsystem::power, HealthWord::unknown, {}, {"psu.txt", "x"}};
    of(verdict, Subsystem::memory).health = HealthWord::absent;
    verdict.findings = {finding(Severity::critical, Subsystem::temperature, "CPU", "cr"),
                        finding(Severity::warning, Subsystem::cooling, "FAN1", "nc"),
                        finding(Severity::warning, Subsystem::cooling, "FAN2", "nc"),
                        finding(Severity::notice, Subsystem::storage, "Controller 0", "learns")};
    const auto report = store_of(verdict);
    const auto outcome = check(report, {"--format", "checkmk"});
    EXPECT_EQ(outcome.exit, 0) << "the agent reads the status of each line";
    EXPECT_EQ(outcome.out,
              "2 \"qvhost temperature\" findings=1 CPU: cr\n"
              "1 \"qvhost cooling\" findings=2 FAN1: nc, FAN2: nc\n"
              "3 \"qvhost power\" findings=0 psu.txt, x\n"
              "0 \"qvhost memory\" findings=0 absent\n"
              "0 \"qvhost processor\" findings=0 ok\n"
              "0 \"qvhost storage\" findings=0 ok\n"
              "0 \"qvhost bmc\" findings=0 ok\n"
              "0 \"qvhost system\" findings=0 ok\n"
              "0 \"qvhost collection\" findings=0 ok\n");
    EXPECT_EQ(
        check(report, {"--format", "checkmk", "--subsystem", "power", "--unknown-as", "ok"}).out,
        "0 \"qvhost power\" findings=0 psu.txt, x\n");
}

TEST_F(Check, AWrongCommandLineIsUnknown) {
    const auto report = store_of(all(HealthWord::ok)).string();
    const std::vector<std::vector<std::string>> wrong{
        {"check", report, "--log-dir", "somewhere"},
        {"check", report, "more"},
        {"check", report, "--nonsense"},
        {"check", report, "--subsystem", "kitchen"},
        {"check", report, "--format", "xml"},
        {"check", report, "--unknown-as", "critical"},
        {"check", report, "--perfdata", "all"},
        {"check", report, "--max-age", "soon"},
        {"check", report, "--max-age", "-1"},
        {"check", report, "--max-age", "3x"},
        {"check", report, "--nonsense\n\x1b[31m|\xff"},
    };
    for (const auto& arguments : wrong) {
        SCOPED_TRACE(arguments.back());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 3);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(lines_of(outcome.out).size(), 1u) << outcome.out;
        EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: ")) << outcome.out;
        EXPECT_TRUE(outcome.out.ends_with(" (see qvhost check --help)\n")) << outcome.out;
        EXPECT_EQ(outcome.out.find_first_of("\x1b|\xff"), std::string::npos) << outcome.out;
    }
    EXPECT_EQ(run({"check", "--help"}).exit, 0);
}

TEST_F(Check, AReportThatCannotBeReadIsUnknown) {
    write_file(dir() / "text", "no store");
    write_file(dir() / "empty", "");
    fs::create_directory(dir() / "directory");
    const auto cut = store_of(all(HealthWord::ok));
    fs::resize_file(cut, fs::file_size(cut) / 2);
    for (const auto& report : {dir() / "nowhere", dir() / "text", dir() / "empty",
                               dir() / "directory", cut, fs::path("no\nwhere|\x1b")}) {
        SCOPED_TRACE(report);
        for (const char* format : {"text", "json", "checkmk"}) {
            const auto outcome = check(report, {"--format", format});
            EXPECT_EQ(outcome.exit, 3);
            EXPECT_EQ(lines_of(outcome.out).size(), 1u) << outcome.out;
            EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: ")) << outcome.out;
            EXPECT_EQ(outcome.out.find_first_of("\x1b|"), std::string::npos) << outcome.out;
        }
    }
    const auto outcome = check(std::string(4000, 'a'));
    EXPECT_EQ(outcome.exit, 3);
    EXPECT_LE(outcome.out.size(), 1024u);
}

TEST_F(Check, AReportWithoutAVerdictIsUnknown) {
    const auto report = store_with({record({{"a", "A", "one"s}})});
    EXPECT_EQ(said(report), "3 UNKNOWN: " + report.string() +
                                ": the report holds no verdict; it is an older version's");
}

TEST_F(Check, RecordedServersAreAsTheirDescriptionsSay) {
    const auto well = replayed("x86_64-kp220-healthy");
    EXPECT_EQ(said(well, {"--max-age", "10m"}),
              "0 OK: temperature, cooling, power, memory, processor, storage, bmc, system, "
              "collection ok" +
                  kNone + " temperature_max=62");
    const auto degraded = check(replayed("x86_64-kp420-two-megaraid"), {"--subsystem", "storage"});
    EXPECT_EQ(degraded.exit, 2) << degraded.out;
}

// A site's rules judge the captures again; the report itself stays as it is.
TEST_F(Check, GoesByTheRulesOfTheSite) {
    const auto report = replayed("x86_64-kp420-two-megaraid");
    const auto before = check(report, {"--format", "json"});
    const auto findings = nlohmann::json::parse(before.out).at("findings");
    std::string rules = "# all of it is known\n";
    for (const auto& one : findings) {
        if (one.at("subsystem") == "storage" && one.at("severity") != "notice")
            rules +=
                "acknowledge " + one.at("id").get<std::string>() + " until 2999-12-31 ticket 7\n";
    }
    ASSERT_GT(lines_of(rules).size(), 1u);
    const auto file = dir() / "rules";
    const std::vector<std::string> asked{"--subsystem", "storage", "--rules", file};

    write_file(file, "");
    EXPECT_EQ(without_age(check(report, asked).out),
              without_age(check(report, {"--subsystem", "storage"}).out));
    EXPECT_EQ(check(report, asked).exit, 2);

    write_file(file, rules);
    const auto known = check(report, asked);
    EXPECT_EQ(known.exit, 0) << known.out;
    EXPECT_NE(known.out.find("; acknowledged until 2999-12-31: ticket 7"), std::string::npos)
        << known.out;

    write_file(file, "severity volume_no_redundancy notice\nseverity drive_failed");
    const auto bad = check(report, asked);
    EXPECT_EQ(bad.exit, 3);
    EXPECT_EQ(bad.out, "UNKNOWN: " + file.string() + ", line 2: the severity is missing\n");

    EXPECT_EQ(check(report, {"--format", "json"}).out, before.out);
}

// A threshold is no matter of words: what is below it is found again.
TEST_F(Check, FindsAgainWhatAThresholdLetPass) {
    const auto report = dir() / "directory";
    fs::create_directories(report / "report");
    fs::rename(store_of(all(HealthWord::ok)), report / "report" / "report.sqlite");
    write_file(
        report / "host_smartctl_nvme0.json",
        R"({"smartctl":{"exit_status":0},"device":{"name":"/dev/nvme0","type":"nvme","protocol":"NVMe"},"serial_number":"Z1",)"
        R"("smart_status":{"passed":true},"nvme_smart_health_information_log":{"percentage_used":30}})");
    const auto file = dir() / "rules";
    const auto finds_wear = [&](const char* line) {
        write_file(file, line);
        return check(report, {"--rules", file}).out.find("30 % of its life used") !=
               std::string::npos;
    };
    EXPECT_FALSE(finds_wear(""));
    EXPECT_FALSE(finds_wear("threshold drive_wear 31"));
    EXPECT_TRUE(finds_wear("threshold drive_wear 30"));
}

TEST_F(Check, RulesThatCannotBeReadAreUnknown) {
    const auto store = store_of(all(HealthWord::ok));
    const auto file = dir() / "rules";
    write_file(file, "");
    EXPECT_EQ(said(store, {"--rules", file}),
              "3 UNKNOWN: " + store.string() +
                  ": --rules needs the captures: name the directory of the report");
    EXPECT_EQ(said(store, {"--rules", dir() / "nowhere"}),
              "3 UNKNOWN: " + (dir() / "nowhere").string() + ": No such file or directory");
    EXPECT_EQ(said(store, {"--rules", dir()}), "3 UNKNOWN: " + dir().string() + ": it is no file");
    write_file(file, std::string((1 << 20) + 1, '#'));
    EXPECT_EQ(said(store, {"--rules", file}),
              "3 UNKNOWN: " + file.string() + ": it is longer than 1 MiB");
}

TEST_F(Check, OutputThatCannotBeWrittenIsAFailure) {
    const auto outcome = run(
        Invocation{.arguments = {"check", store_of(all(HealthWord::ok))}, .out_file = "/dev/full"});
    EXPECT_NE(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "qvhost: cannot write to standard output\n");
}

}  // namespace

}  // namespace test
