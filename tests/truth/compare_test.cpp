// The comparison finds nothing in a report that tells the truth, and each single lie.
#include "compare.h"

#include <gtest/gtest.h>

#include "truth.h"

namespace truth {

namespace {

using Lines = std::vector<std::string>;

const Json kTruth = Json::parse(R"({
  "captures": [
    {"capture": "c0_showall.txt", "lines": 90, "ended_badly": "", "whole": true},
    {"capture": "sensorinfo.txt", "lines": 3, "ended_badly": "killed by signal 9", "whole": false, "cut_line": 3}],
  "inventory": {
    "drives": [
      {"capture": "c0_showall.txt", "line": 60, "enclosure": 8, "slot": 0, "model": "EXM SSDA480G2", "capacity_bytes": 479000000000,
       "serial": null, "compare": {"match": ["enclosure", "slot"], "certain": true,
       "places": [{"capture": "c0_showall.txt", "first": 60, "last": 60}]}},
      {"capture": "c0_showall.txt", "line": 61, "enclosure": null, "slot": 5, "model": "EXM", "capacity_bytes": 479000000000,
       "serial": "A1", "compare": {"match": ["enclosure", "slot"], "certain": false, "also": {"model": ["ATA EXM", null]},
       "free": ["serial"], "places": [{"capture": "c0_showall.txt", "first": 61, "last": 61}]}}],
    "sensors": [
      {"capture": "sensorinfo.txt", "line": 1, "name": "Temp", "reading": 41.5, "status": "ok",
       "compare": {"match": ["name"], "certain": true, "places": [{"capture": "sensorinfo.txt", "first": 1, "last": 1}]}},
      {"capture": "sensorinfo.txt", "line": 2, "name": "Temp", "reading": 43.0, "status": "cr",
       "compare": {"match": ["name"], "certain": true, "places": [{"capture": "sensorinfo.txt", "first": 2, "last": 2}]}}]},
  "findings": [
    {"about": "sensor Temp is cr", "rules": ["temperature_critical"], "severity": ["critical"], "subsystem": "temperature",
     "places": [{"capture": "sensorinfo.txt", "first": 2, "last": 2}], "holds": ["Temp"], "certain": true, "once": true},
    {"about": "old entry", "rules": ["event_threshold"], "severity": ["notice"], "subsystem": "system",
     "places": [{"capture": "c0_showall.txt", "first": 5, "last": 6}], "holds": [], "certain": false, "once": false}],
  "health": {"temperature": ["critical"], "storage": ["ok", "unknown"]},
  "events": [
    {"source": "bmc", "time": null, "words": "AC Lost", "certain": true,
     "places": [{"capture": "c0_showall.txt", "first": 10, "last": 19}]}]})");

const Json kReport = Json::parse(R"({
  "inventory": {
    "drives": [
      {"capture": "c0_showall.txt", "line": 61, "enclosure": null, "slot": 5, "model": "ATA EXM", "capacity_bytes": 479000001024, "serial": "whatever"},
      {"capture": "c0_showall.txt", "line": 60, "enclosure": 8, "slot": 0, "model": "EXM SSDA480G2", "capacity_bytes": 479000000000, "serial": null}],
    "sensors": [
      {"capture": "sensorinfo.txt", "line": 1, "name": "Temp", "reading": 41.5, "status": "ok"},
      {"capture": "sensorinfo.txt", "line": 2, "name": "Temp", "reading": 43.0, "status": "cr"}]},
  "findings": [
    {"id": "1", "rule": "temperature_critical", "severity": "critical", "subsystem": "temperature", "subject": "Sensor Temp",
     "says": "43", "time": null, "count": 1, "evidence": [{"capture": "sensorinfo.txt", "line": 2}]},
    {"id": "2", "rule": "not_read", "severity": "unknown", "subsystem": "collection", "subject": "sensorinfo.txt",
     "says": "killed", "time": null, "count": 1, "evidence": [{"capture": "sensorinfo.txt", "line": 0}]}],
  "health": [
    {"subsystem": "temperature", "health": "critical", "judged_by": [], "missing": []},
    {"subsystem": "storage", "health": "ok", "judged_by": ["c0_showall.txt"], "missing": []}],
  "events": [{"source": "bmc", "time": null, "subject": "PSU2", "text": "AC Lost", "capture": "c0_showall.txt", "line": 12}]})");

struct Lie {
    const char* pointer;     // where the report is changed
    const char* value;       // to this; "": it is taken away
    const char* difference;  // what the comparison says
};

void PrintTo(const Lie& lie, std::ostream* out) { *out << lie.pointer << " = " << lie.value; }

Json changed(const Lie& lie) {
    auto report = kReport;
    const Json::json_pointer pointer(lie.pointer);
    if (std::string(lie.value).empty()) {
        auto& parent = report.at(pointer.parent_pointer());
        if (parent.is_array()) {
            parent.erase(std::stoul(pointer.back()));
        } else {
            parent.erase(pointer.back());
        }
    } else {
        report[pointer] = Json::parse(lie.value);
    }
    return report;
}

TEST(Compare, FindsNothingInATrueReport) { EXPECT_EQ(compare(kTruth, kReport), Lines()); }

class OneLie : public testing::TestWithParam<Lie> {};

TEST_P(OneLie, IsFound) {
    const auto differences = compare(kTruth, changed(GetParam()));
    ASSERT_FALSE(differences.empty());
    EXPECT_EQ(differences.front(), GetParam().difference);
}

INSTANTIATE_TEST_SUITE_P(
    Of, OneLie,
    testing::Values(
        Lie{"/inventory/drives/1/model", R"("EXM SSDA480G2    U")",
            R"(drives enclosure=8 slot=0 ("c0_showall.txt" line 60): model is "EXM SSDA480G2    U", not "EXM SSDA480G2")"},
        Lie{"/inventory/drives/1/serial", R"("A1")",
            R"(drives enclosure=8 slot=0 ("c0_showall.txt" line 60): serial is "A1", not null)"},
        Lie{"/inventory/drives/1/capacity_bytes", "480000000000",
            R"(drives enclosure=8 slot=0 ("c0_showall.txt" line 60): capacity_bytes is 480000000000, not 479000000000)"},
        Lie{"/inventory/drives/1", "",
            R"(missing: drives enclosure=8 slot=0 ("c0_showall.txt" line 60))"},
        Lie{"/inventory/drives/1/line", "61",
            R"(drives enclosure=8 slot=0 ("c0_showall.txt" line 60): stands at "c0_showall.txt" line 61)"},
        Lie{"/inventory/drives/0/slot", "6",
            R"(unexpected: drives slot=6 serial="whatever" ("c0_showall.txt" line 61))"},
        Lie{"/inventory/drives", "", "inventory has no list drives"},
        Lie{"/inventory/sensors/1/reading", "41.5",
            R"(sensors name="Temp" ("sensorinfo.txt" line 2): reading is 41.5, not 43.0)"},
        Lie{"/findings/0", "",
            R"(no finding: "sensor Temp is cr" ["critical"] at [{"capture":"sensorinfo.txt","first":2,"last":2}])"},
        Lie{"/findings/0/severity", R"("warning")",
            R"(finding "temperature_critical" ("warning") of "Sensor Temp": "43", "sensorinfo.txt" line 2: severity should be ["critical"])"},
        Lie{"/findings/0/subsystem", R"("cooling")",
            R"(finding "temperature_critical" ("critical") of "Sensor Temp": "43", "sensorinfo.txt" line 2: subsystem is "cooling", not "temperature")"},
        Lie{"/findings/0/subject", R"("Sensor")",
            R"(finding "temperature_critical" ("critical") of "Sensor": "43", "sensorinfo.txt" line 2: does not name ["Temp"])"},
        Lie{"/findings/0/evidence/0/line", "1",
            R"(no finding: "sensor Temp is cr" ["critical"] at [{"capture":"sensorinfo.txt","first":2,"last":2}])"},
        Lie{"/findings/1/evidence/0/capture", R"("c0_showall.txt")",
            R"(unexpected finding "not_read" ("unknown") of "sensorinfo.txt": "killed", "c0_showall.txt" line 0)"},
        Lie{"/findings/1/severity", R"("warning")",
            R"(unexpected finding "not_read" ("warning") of "sensorinfo.txt": "killed", "sensorinfo.txt" line 0)"},
        Lie{"/findings/1/evidence/0/line", "4",
            R"(finding "not_read" ("unknown") of "sensorinfo.txt": "killed", "sensorinfo.txt" line 4: there is no such line)"},
        Lie{"/findings/2",
            R"({"rule": "temperature_critical", "severity": "critical", "subsystem": "temperature", "subject": "Temp", "says": "", "evidence": [{"capture": "sensorinfo.txt", "line": 2}]})",
            R"("sensor Temp is cr" is told 2 times)"},
        Lie{"/health/0/health", R"("ok")",
            R"(health of temperature is "ok", not ["critical"]; missing: [])"},
        Lie{"/health/1/health", R"("unknown")",
            "health of storage is unknown and does not say why"},
        Lie{"/health/1/judged_by", "[]", "health of storage is ok and rests on nothing"},
        Lie{"/health/1", "", "no health of storage"},
        Lie{"/events/0/time", R"("1970-01-01T00:04:52")",
            R"(event at "c0_showall.txt" line 12: time is "1970-01-01T00:04:52", not null)"},
        Lie{"/events/0", "",
            R"(no event: AC Lost at [{"capture":"c0_showall.txt","first":10,"last":19}])"}));

TEST(Compare, AcceptsWhatMayBeSo) {
    for (
        const Lie& change :
        {Lie{"/inventory/drives/0", "", ""}, Lie{"/inventory/drives/0/model", "null", ""},
         Lie{"/findings/1", "", ""},
         Lie{"/findings/2",
             R"({"rule": "event_threshold", "severity": "notice", "subsystem": "system", "subject": "", "says": "", "evidence": [{"capture": "c0_showall.txt", "line": 6}]})",
             ""},
         Lie{"/inventory/sensors/2", R"({"capture": "sensorinfo.txt", "line": 3, "name": "Tem"})",
             ""}})
        EXPECT_EQ(compare(kTruth, changed(change)), Lines()) << change.pointer;
}

// The report of somebody who knows the truth.
Json report_of(const Json& truth) {
    Json report;
    for (const auto& [kind, list] : truth.at("inventory").items()) {
        auto& entities = report["inventory"][kind] = Json::array();
        for (auto entity : list) {
            entity.erase("compare");
            entities.push_back(entity);
        }
    }
    report["findings"] = Json::array();
    for (const auto& one : truth.at("findings")) {
        if (!one.at("certain").get<bool>()) continue;
        std::string subject;
        for (const auto& word : one.at("holds")) subject += word.get<std::string>() + " ";
        const auto& place = one.at("places").front();
        report["findings"].push_back(
            {{"rule", one.at("rules").front()},
             {"severity", one.at("severity").front()},
             {"subsystem", one.at("subsystem")},
             {"subject", subject},
             {"says", ""},
             {"evidence", {{{"capture", place.at("capture")}, {"line", place.at("first")}}}}});
    }
    report["health"] = Json::array();
    for (const auto& [subsystem, words] : truth.at("health").items())
        report["health"].push_back({{"subsystem", subsystem},
                                    {"health", words.front()},
                                    {"judged_by", {"something"}},
                                    {"missing", {"something"}}});
    report["events"] = Json::array();
    for (const auto& event : truth.at("events"))
        report["events"].push_back({{"source", event.at("source")},
                                    {"time", event.at("time")},
                                    {"subject", nullptr},
                                    {"text", event.at("words")},
                                    {"capture", event.at("places").front().at("capture")},
                                    {"line", event.at("places").front().at("first")}});
    return report;
}

Json truth_of(std::uint64_t seed) {
    Options options;
    options.seed = seed;
    options.now = usual_now();
    return make(options)->truth;
}

TEST(Compare, FindsNothingInTheTruthItself) {
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        const auto truth = truth_of(seed);
        EXPECT_EQ(compare(truth, report_of(truth)), Lines()) << seed;
    }
}

TEST(Compare, FindsEachValueThatIsAnothers) {
    int changes = 0;
    for (std::uint64_t seed = 1; seed <= 8; ++seed) {
        const auto truth = truth_of(seed);
        const auto report = report_of(truth);
        for (const auto& [kind, list] : truth.at("inventory").items()) {
            for (std::size_t index = 0; index < list.size(); index += 9) {
                const auto& how = list[index].at("compare");
                for (const auto& [field, value] : list[index].items()) {
                    const auto& name = field;
                    const bool is_loose = [&] {
                        for (const char* list_of : {"free", "begins", "cut"}) {
                            if (how.contains(list_of) &&
                                std::count(how.at(list_of).begin(), how.at(list_of).end(), name) >
                                    0)
                                return true;
                        }
                        return false;
                    }();
                    if (name == "compare" || name == "capture" || name == "line" || is_loose)
                        continue;
                    auto changed = report;
                    changed["inventory"][kind][index][name] = "a neighbour's";
                    EXPECT_FALSE(compare(truth, changed).empty())
                        << seed << " " << kind << " " << name;
                    ++changes;
                }
            }
        }
    }
    EXPECT_GT(changes, 500);
}

}  // namespace

}  // namespace truth
