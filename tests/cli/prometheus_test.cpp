// "qvhost export --format prometheus": what promtool and Prometheus take, of every recorded server and of
// texts as bad as tools can print.
#include <algorithm>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "report.h"
#include "report_under_test.h"
#include "setting.h"
#include "store/store.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace qvhost::findings;
using qvhost::inventory::Drive;
using qvhost::inventory::Inventory;
using qvhost::inventory::Sensor;
using qvhost::inventory::Volume;

bool is_utf8(const std::string& text) {
    try {
        return !nlohmann::json(text).dump().empty();
    } catch (const nlohmann::json::exception&) {
        return false;
    }
}

class Prometheus : public ReportTest {
protected:
    fs::path store_of(const Verdict& verdict, const Inventory& inventory,
                      const std::map<std::string, std::string>& meta = {}) {
        const auto file = dir() / ("store" + std::to_string(++stores_) + ".sqlite");
        qvhost::Store store(file, qvhost::Store::Mode::create);
        for (const auto& [key, value] : meta) store.set_meta(key, value);
        qvhost::write_inventory(store, inventory);
        qvhost::write_verdict(store, verdict);
        store.commit();
        return file;
    }

    static std::string status_of(const fs::path& report) {
        const auto file = fs::is_directory(report) ? store_in(report) : report;
        return qvhost::Store(file, qvhost::Store::Mode::read).status_text();
    }

    std::string metrics(const fs::path& report) {
        const auto outcome = run({"export", report, "--format", "prometheus"});
        EXPECT_EQ(outcome.exit, 0);
        const auto status = status_of(report);
        const bool is_told = status.starts_with("incomplete");
        EXPECT_EQ(outcome.err, is_told ? "qvhost: this collection is " + status + "\n" : "");
        return outcome.out;
    }

    // The samples of one metric, whole.
    std::vector<std::string> samples(const fs::path& report, const std::string& name) {
        std::vector<std::string> found;
        for (const auto& line : lines_of(metrics(report))) {
            if (line.starts_with(name + "{") || line.starts_with(name + " ")) found.push_back(line);
        }
        return found;
    }

    void expect_clean(const std::string& text) {
        EXPECT_TRUE(is_utf8(text));
        EXPECT_TRUE(text.ends_with('\n'));

        const auto file = dir() / "metrics";
        write_file(file, text);
        const auto outcome = run(
            Invocation{.arguments = {},
                       .program = {"/bin/sh", "-c", "promtool check metrics <\"$1\"", "sh", file}});
        EXPECT_EQ(outcome.exit, 0);
        EXPECT_EQ(outcome.out + outcome.err, "");

        // promtool is silent about a series that stands twice.
        std::set<std::string> series;
        std::set<std::string> introduced;
        std::string metric;
        for (const auto& line : lines_of(text)) {
            if (line.starts_with("# HELP ") || line.starts_with("# TYPE ")) {
                metric = line.substr(7, line.find(' ', 7) - 7);
                EXPECT_TRUE(introduced.insert(line.substr(0, 7) + metric).second) << line;
                EXPECT_TRUE(metric.starts_with("qvhost_")) << line;
                continue;
            }
            EXPECT_TRUE(introduced.contains("# HELP " + metric)) << line;
            EXPECT_TRUE(introduced.contains("# TYPE " + metric)) << line;
            EXPECT_EQ(line.substr(0, line.find_first_of("{ ")), metric);
            const auto labels = line.rfind(' ');
            EXPECT_TRUE(series.insert(line.substr(0, labels)).second) << line;
            // No time stamp: the end of the labels stands before the value.
            EXPECT_TRUE(line[labels - 1] == '}' || line.find(' ') == labels) << line;
        }
    }

private:
    int stores_ = 0;
};

TEST_F(Prometheus, EveryRecordedServerGivesCleanMetrics) {
    for (const auto& name : some_of(recorded_servers())) {
        SCOPED_TRACE(name);
        const auto report = replayed(name);
        const auto text = metrics(report);
        expect_clean(text);
        const bool complete = !is_incomplete(name);
        EXPECT_EQ(status_of(report) == "complete", complete) << status_of(report);
        EXPECT_NE(text.find("\nqvhost_collection_complete "s + (complete ? "1\n" : "0\n")),
                  std::string::npos);
        EXPECT_NE(text.find("\nqvhost_collection_end_timestamp_seconds "), std::string::npos);
        EXPECT_NE(text.find("\nqvhost_collection_duration_seconds "), std::string::npos);
    }
}

TEST_F(Prometheus, TheCollectionIsTold) {
    const auto report = store_of({}, {},
                                 {{"qvhost", "1.2.3\n"},
                                  {"status", "incomplete"},
                                  {"finished", "2026-11-21T01:20:40Z"},
                                  {"seconds", "12.5"}});
    EXPECT_EQ(samples(report, "qvhost_build_info"),
              (std::vector<std::string>{R"(qvhost_build_info{version="1.2.3\n",format="1"} 1)"}));
    EXPECT_EQ(samples(report, "qvhost_collection_complete"),
              (std::vector<std::string>{"qvhost_collection_complete 0"}));
    EXPECT_EQ(samples(report, "qvhost_collection_end_timestamp_seconds"),
              (std::vector<std::string>{"qvhost_collection_end_timestamp_seconds 1795224040"}));
    EXPECT_EQ(samples(report, "qvhost_collection_duration_seconds"),
              (std::vector<std::string>{"qvhost_collection_duration_seconds 12.5"}));
    expect_clean(metrics(report));
    expect_clean(metrics(store_of({}, {}, {{"finished", "soon"}, {"seconds", "a few"}})));
}

TEST_F(Prometheus, EveryWordOfHealthIsToldAndEveryCount) {
    Verdict verdict;
    verdict.health = {{Subsystem::storage, HealthWord::critical, {}, {}},
                      {Subsystem::bmc, HealthWord::unknown, {}, {"a", "b"}}};
    for (const auto severity : {Severity::critical, Severity::notice, Severity::critical})
        verdict.findings.push_back({"id", "r", severity, Subsystem::storage, "s", "t", {}, 9, {}});
    const auto report = store_of(verdict, {});

    std::vector<std::string> health;
    for (const std::string one : {"storage", "bmc"}) {
        for (const std::string word : {"critical", "warning", "unknown", "ok", "absent"}) {
            const bool holds = word == (one == "storage" ? "critical" : "unknown");
            health.push_back("qvhost_health{subsystem=\"" + one + "\",health=\"" + word + "\"} " +
                             (holds ? "1" : "0"));
        }
    }
    EXPECT_EQ(samples(report, "qvhost_health"), health);

    std::vector<std::string> counts;
    for (const std::string one : {"temperature", "cooling", "power", "memory", "processor",
                                  "storage", "bmc", "system", "collection"}) {
        for (const std::string severity : {"critical", "warning", "unknown", "notice"}) {
            const char* count = one != "storage"         ? "0"
                                : severity == "critical" ? "2"
                                : severity == "notice"   ? "1"
                                                         : "0";
            counts.push_back("qvhost_findings{subsystem=\"" + one + "\",severity=\"" + severity +
                             "\"} " + count);
        }
    }
    EXPECT_EQ(samples(report, "qvhost_findings"), counts);
    EXPECT_EQ(samples(report, "qvhost_not_read"),
              (std::vector<std::string>{"qvhost_not_read{subsystem=\"storage\"} 0",
                                        "qvhost_not_read{subsystem=\"bmc\"} 2"}));
}

Sensor sensor(const std::string& name, const std::string& kind, double reading,
              const std::string& status) {
    Sensor one;
    one.name = name;
    one.kind = kind;
    one.reading = reading;
    one.status = status;
    return one;
}

TEST_F(Prometheus, SensorsAreToldByKind) {
    Inventory inventory;
    inventory.sensors = {
        sensor("CPU", "temperature", 41.5, "ok"),
        sensor("FAN", "fan", 9000, "nc"),
        sensor("FAN", "fan", 0, "cr"),
        sensor("P12V", "voltage", 12.125, "nr"),
        sensor("I", "current", 0.5, "ns"),
        sensor("P", "power", 300, "na"),
        sensor("RH", "humidity", 40, "ok"),
    };
    inventory.sensors[0].number = "30h";
    inventory.sensors.resize(8);
    inventory.sensors[7].name = "Redundancy";
    inventory.sensors[7].kind = "discrete";
    inventory.sensors[7].status = "ok";
    const auto report = store_of({}, inventory);
    std::vector<std::string> told;
    for (const auto& line : lines_of(metrics(report))) {
        if (!line.starts_with("#") && line.find("name=") != std::string::npos) told.push_back(line);
    }
    EXPECT_EQ(told, (std::vector<std::string>{
                        R"(qvhost_temperature_celsius{id="30h",name="CPU"} 41.5)",
                        R"(qvhost_fan_speed_rpm{id="1",name="FAN"} 9000)",
                        R"(qvhost_fan_speed_rpm{id="2",name="FAN"} 0)",
                        R"(qvhost_voltage_volts{id="1",name="P12V"} 12.125)",
                        R"(qvhost_current_amperes{id="1",name="I"} 0.5)",
                        R"(qvhost_power_watts{id="1",name="P"} 300)",
                        R"(qvhost_sensor_state{id="30h",name="CPU",kind="temperature"} 0)",
                        R"(qvhost_sensor_state{id="1",name="FAN",kind="fan"} 1)",
                        R"(qvhost_sensor_state{id="2",name="FAN",kind="fan"} 2)",
                        R"(qvhost_sensor_state{id="1",name="P12V",kind="voltage"} 3)",
                        R"(qvhost_sensor_state{id="1",name="RH",kind="humidity"} 0)",
                        R"(qvhost_sensor_state{id="1",name="Redundancy",kind="discrete"} 0)",
                    }));
}

TEST_F(Prometheus, DrivesAreToldWithAllTheirLabels) {
    Inventory inventory;
    Drive one;
    one.controller = 0;
    one.enclosure = 252;
    one.slot = 1;
    one.device = "/dev/sda";
    one.serial = "ZA1";
    one.model = "M 1";
    one.firmware = "F1";
    one.state = "Onln";
    one.media_errors = 3;
    one.temperature_celsius = 31;
    // Of another tool's first controller: at the same place.
    Drive other = one;
    other.serial = "ZA2";
    other.media_errors = 7;
    inventory.drives = {one, other, {}};
    const auto report = store_of({}, inventory);
    const std::string place =
        R"({controller="0",enclosure="252",slot="1",device="/dev/sda",serial="ZA)";
    const std::string rest = R"(",model="M 1",firmware="F1")";
    const std::string nothing = R"({controller="",enclosure="",slot="",device="",serial="",)"
                                R"(model="",firmware="")";
    EXPECT_EQ(samples(report, "qvhost_drive_info"),
              (std::vector<std::string>{"qvhost_drive_info" + place + "1" + rest + "} 1",
                                        "qvhost_drive_info" + place + "2" + rest + "} 1",
                                        "qvhost_drive_info" + nothing + "} 1"}));
    EXPECT_EQ(samples(report, "qvhost_drive_state"),
              (std::vector<std::string>{
                  "qvhost_drive_state" + place + "1" + rest + R"(,state="Onln"} 1)",
                  "qvhost_drive_state" + place + "2" + rest + R"(,state="Onln"} 1)"}));
    EXPECT_EQ(
        samples(report, "qvhost_drive_media_errors_total"),
        (std::vector<std::string>{"qvhost_drive_media_errors_total" + place + "1" + rest + "} 3",
                                  "qvhost_drive_media_errors_total" + place + "2" + rest + "} 7"}));
    EXPECT_EQ(samples(report, "qvhost_drive_temperature_celsius"),
              (std::vector<std::string>{
                  "qvhost_drive_temperature_celsius" + place + "1" + rest + "} 31",
                  "qvhost_drive_temperature_celsius" + place + "2" + rest + "} 31"}));
}

TEST_F(Prometheus, VolumesAreToldByNumberOrDevice) {
    Inventory inventory;
    Volume one;
    one.controller = 1;
    one.number = 239;
    one.state = "Dgrd";
    Volume array;
    array.device = "/dev/md0";
    array.state = "clean";
    inventory.volumes = {one, array, {}};
    EXPECT_EQ(samples(store_of({}, inventory), "qvhost_volume_state"),
              (std::vector<std::string>{
                  R"(qvhost_volume_state{controller="1",number="239",state="Dgrd"} 1)",
                  R"(qvhost_volume_state{controller="",number="/dev/md0",state="clean"} 1)"}));
}

// Line ends, quotes, backslashes and bytes that are no UTF-8, in every text; numbers that are none.
TEST_F(Prometheus, TextsAreInert) {
    const std::string bad = "a\"} 1\nqvhost_evil 1\r\n\\\0\x1b[31m\x7f\xff\xc3|€"s;
    const std::string inert = "a\\\"} 1\\nqvhost_evil 1 \\n\\\\  [31m \ufffd\ufffd|€";
    Inventory inventory;
    inventory.sensors = {sensor(bad, "fan", std::numeric_limits<double>::infinity(), "ok"),
                         sensor(bad, "fan", -std::numeric_limits<double>::infinity(), bad),
                         sensor(bad, "voltage", 1e300, "ok")};
    inventory.sensors[2].number = bad;
    Drive drive;
    drive.device = drive.serial = drive.model = drive.firmware = drive.state = bad;
    inventory.drives = {drive, drive};
    Volume volume;
    volume.device = volume.state = bad;
    inventory.volumes = {volume, volume};
    const auto report = store_of({}, inventory, {{"qvhost", bad}, {"status", bad}});
    const auto text = metrics(report);
    expect_clean(text);
    EXPECT_EQ(text.find("\nqvhost_evil"), std::string::npos);
    EXPECT_EQ(samples(report, "qvhost_volume_state"),
              (std::vector<std::string>{"qvhost_volume_state{controller=\"\",number=\"" + inert +
                                        "\",state=\"" + inert + "\"} 1"}));
    EXPECT_EQ(samples(report, "qvhost_drive_info").size(), 1u);
}

// A store in which a subsystem stands twice, as nothing of ours writes it.
TEST_F(Prometheus, ASeriesStandsOnce) {
    Verdict verdict;
    verdict.health = {{Subsystem::bmc, HealthWord::ok, {}, {}},
                      {Subsystem::bmc, HealthWord::critical, {}, {}}};
    Inventory inventory;
    inventory.sensors = {sensor("X", "fan", 1, "ok"), sensor("X", "fan", 2, "ok")};
    inventory.sensors[0].number = inventory.sensors[1].number = "1h";
    const auto report = store_of(verdict, inventory);
    expect_clean(metrics(report));
    EXPECT_EQ(samples(report, "qvhost_health").size(), 5u);
    EXPECT_EQ(samples(report, "qvhost_fan_speed_rpm"),
              (std::vector<std::string>{R"(qvhost_fan_speed_rpm{id="1h",name="X"} 1)"}));
}

TEST_F(Prometheus, AReportWithoutInventoryGivesCleanMetrics) {
    expect_clean(metrics(store_with({})));
}

}  // namespace

}  // namespace test
