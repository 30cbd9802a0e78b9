// "qvhost show": what people and programs read of a report, at the widths of terminals and through pipes.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "csv.h"
#include "report_under_test.h"
#include "setting.h"
#include "show/visible.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using nlohmann::json;

class ShowReport : public ReportTest {
protected:
    std::string shown(const std::vector<std::string>& arguments, unsigned width = 0) {
        std::vector<std::string> all{"show"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::map<std::string, std::string> environment;
        if (width > 0) environment["COLUMNS"] = std::to_string(width);
        const auto outcome = run(Invocation{.arguments = all, .environment = environment});
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        return outcome.out;
    }
    std::string error_of(const std::vector<std::string>& arguments) {
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 1) << outcome.out;
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    }
};

std::vector<json> objects_in(const std::string& lines) {
    std::vector<json> objects;
    for (const auto& line : lines_of(lines)) objects.push_back(json::parse(line));
    return objects;
}

// Health and findings come first, the worst of them on top, each with its evidence.
TEST_F(ShowReport, WithoutATableItSaysWhatMatters) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto report = json::parse(read_file(log / "report" / "report.json"));
    const auto text = shown({log});
    const auto health = text.find("\nHealth\n");
    const auto findings = text.find("\nFindings: 7 critical, 12 warning, 19 notice\n");
    const auto tables = text.find("\nTable ");
    ASSERT_NE(tables, std::string::npos) << text;
    EXPECT_LT(health, findings);
    EXPECT_LT(findings, tables);
    EXPECT_NE(text.find("Serial number  EXS0002201\n"), std::string::npos);

    std::size_t place = findings;
    for (const auto& finding : report["findings"]) {
        const auto& first = finding["evidence"][0];
        const auto says = finding["says"].get<std::string>();
        const auto line = text.find(says, place);
        ASSERT_NE(line, std::string::npos) << finding;
        const auto rest = text.substr(line, text.find('\n', line) - line);
        EXPECT_NE(rest.find(first["capture"].get<std::string>() + ":" + first["line"].dump()),
                  std::string::npos)
            << "a finding is one line, with its evidence: " << rest;
        EXPECT_LT(line, tables);
        place = line;
    }
    EXPECT_NE(text.find("\nSENSORINFO      63     Sensor Status\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("CONTROLLER"), std::string::npos) << "it is empty";
    EXPECT_TRUE(text.ends_with("\n15 tables are empty; --all says why.\n")) << text;
    EXPECT_NE(shown({log, "--all"})
                  .find(" (Sample Module 1), no records: collected only with --also pmc\n"),
              std::string::npos);
}

TEST_F(ShowReport, ACollectionEndsWithTheFindingsAndThenTheTables) {
    const auto outcome = run({"replay", fs::path(QV_SAMPLES) / "x86_64-kp220-megaraid", "--log-dir",
                              log_dir(), "--quiet"});
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    const auto finding = outcome.out.find(
        "  critical  Volume 2 \"data pool\" of controller 0 (RAID5): state Dgrd (c0_showall.txt:68)\n");
    EXPECT_NE(finding, std::string::npos) << outcome.out;
    EXPECT_LT(finding, outcome.out.find("\nModule ")) << outcome.out;
    EXPECT_TRUE(
        outcome.out.ends_with("\nReport: " + (log_dir() / "report/index.html").string() + "\n"));
}

TEST_F(ShowReport, NamesAreWrittenInAnyWay) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto sensors = shown({log, "SENSORINFO"});
    EXPECT_NE(sensors.find("\nCPU2 Temp"), std::string::npos);
    EXPECT_EQ(shown({log, "sensorinfo"}), sensors);
    EXPECT_EQ(shown({log, "SensorInfo"}), sensors);

    const auto drives = shown({log, "drives"});
    EXPECT_NE(drives.find("EX220005"), std::string::npos);
    for (const char* name : {"drive", "Drive", "DRIVES"}) EXPECT_EQ(shown({log, name}), drives);
    const auto modules = shown({log, "memory_modules"});
    for (const char* name : {"memory_module", "memory-modules", "Memory-Module"})
        EXPECT_EQ(shown({log, name}), modules);
    EXPECT_EQ(shown({log, "battery"}), shown({log, "batteries"}));
    EXPECT_EQ(shown({log, "power_supply"}), shown({log, "power_supplies"}));

    // One word for a table of the plug-in's and one of the host's own: both are shown.
    EXPECT_EQ(shown({log, "volume"}), shown({log, "volumes", "VOLUME"}));
}

TEST_F(ShowReport, TheNearestNameIsOffered) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const struct {
        const char* name;
        const char* offered;
    } cases[] = {
        {"SENSRINFO", "; did you mean SENSORINFO?"},
        {"drvies", "; did you mean drives?"},
        {"sensr", "; did you mean sensors?"},
        {"PDLISTS", "; did you mean PDLIST?"},
        {"xyzzy", ";"},
    };
    for (const auto& [name, offered] : cases) {
        const auto text =
            ": there is no table "s + name + offered + " \"qvhost show REPORT\" lists them\n";
        EXPECT_EQ(error_of({"show", log, name}), "qvhost: " + log.string() + text);
        EXPECT_EQ(error_of({"export", log, "--format", "csv", "--table", name}),
                  "qvhost: " + log.string() + text);
    }
}

TEST_F(ShowReport, LinksAreNames) {
    const auto log = replayed("x86_64-kp220-megaraid");
    for (const unsigned width : {0u, 80u, 200u}) {
        const auto text = shown({log, "LSILINK"}, width);
        EXPECT_EQ(text.find('<'), std::string::npos) << text;
        EXPECT_NE(text.find("c1_fwtermlog.txt"), std::string::npos) << text;
    }
}

TEST_F(ShowReport, ATerminalGetsTheColumnsThatMatter) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto text = shown({log, "drives"}, 100);
    EXPECT_NE(text.find(" 10        5     Offln 1.1 TiB "), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with(" more columns with --format blocks.\n")) << text;
    const auto blocks = shown({log, "drives", "--format", "blocks"}, 100);
    EXPECT_NE(blocks.find("\nfirmware                 EX11\n"), std::string::npos) << blocks;
    EXPECT_NE(blocks.find("\nis_foreign               no\n"), std::string::npos) << blocks;
}

TEST_F(ShowReport, RowsAreTheSameForPrograms) {
    const auto log = replayed("x86_64-kp220-megaraid");
    for (const std::string table : {"SENSORINFO", "EVENTLOG1", "LSILINK", "drives", "events"}) {
        SCOPED_TRACE(table);
        const auto lines = shown({log, table, "--format", "jsonl"});
        const auto objects = objects_in(lines);
        ASSERT_FALSE(objects.empty());
        for (const auto& object : objects) EXPECT_EQ(object["qv_table"], table);
        EXPECT_EQ(json::parse(shown({log, table, "--format", "json"})), json(objects));
        EXPECT_EQ(run({"export", log, "--format", "jsonl", "--table", table}).out, lines);
        EXPECT_EQ(json::parse(run({"export", log, "--format", "json", "--table", table}).out),
                  json(objects));

        const auto queried =
            objects_in(run({"query", log, "SELECT * FROM " + table, "--format", "jsonl"}).out);
        ASSERT_EQ(queried.size(), objects.size());
        for (const auto& [key, value] : queried[0].items()) {
            if (key == "qv_seq" || objects[0][key].is_boolean()) continue;
            EXPECT_EQ(objects[0][key], value) << key;
        }
        const auto csv = shown({log, table, "--format", "csv"});
        EXPECT_EQ(read_csv(csv).size(), objects.size() + 1);
        EXPECT_EQ(run({"export", log, "--format", "csv", "--table", table}).out, csv);
    }
}

TEST_F(ShowReport, BooleansOfTheInventoryAreBooleans) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto drive = objects_in(shown({log, "drives", "--format", "jsonl"})).at(8);
    EXPECT_EQ(drive["is_foreign"], true);
    EXPECT_EQ(drive["slot"], 8);
    EXPECT_EQ(drive["rebuild_percent"], nullptr);
}

// Everything in one stream, in order.
TEST_F(ShowReport, AWholeReportIsAStreamOfLines) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto report = json::parse(read_file(log / "report" / "report.json"));
    const auto outcome = run({"export", log, "--format", "jsonl"});
    EXPECT_EQ(outcome.err, "");
    std::map<std::string, std::vector<json>> rows;
    for (const auto& object : objects_in(outcome.out))
        rows[object["qv_table"].get<std::string>()].push_back(object);
    std::map<std::string, std::size_t> records;
    for (const auto& one : report["records"]) {
        const auto id = one["table"].get<std::string>();
        const auto& row = rows[id].at(records[id]++);
        for (const auto& property : one["properties"])
            EXPECT_EQ(row[property["id"].get<std::string>()], property["value"]);
    }
    for (const auto& [id, count] : records) EXPECT_EQ(rows[id].size(), count) << id;
    for (const auto& [kind, entities] : report["inventory"].items())
        EXPECT_EQ(rows[kind].size(), entities.size()) << kind;
    EXPECT_EQ(rows["findings"].size(), report["findings"].size());

    const auto file = dir() / "all.jsonl";
    const std::vector<std::string> into_file{"export", log, "--format", "jsonl", "--output", file};
    EXPECT_EQ(run(into_file).exit, 0);
    EXPECT_TRUE(read_file(file) == outcome.out);
    EXPECT_EQ(run(into_file).exit, 1) << "it is not replaced";
}

TEST_F(ShowReport, EveryFormatTakesATable) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto out = dir() / "page";
    EXPECT_EQ(
        run({"export", log, "--format", "html", "--output", out, "--table", "sensorinfo"}).exit, 0);
    std::size_t tables = 0;
    for (const auto& entry : fs::directory_iterator(out / "data")) {
        const auto name = entry.path().filename().string();
        if (name == "overview.js" || name.starts_with("events")) continue;
        ++tables;
        EXPECT_NE(name.find("SENSORINFO"), std::string::npos) << name;
    }
    EXPECT_EQ(tables, 1u);

    const auto metrics = run({"export", log, "--format", "prometheus", "--table", "volume"}).out;
    EXPECT_TRUE(metrics.starts_with("# HELP qvhost_volume_state ")) << metrics;
    for (const auto& line : lines_of(metrics))
        EXPECT_NE(line.find("qvhost_volume_state"), std::string::npos) << line;
    EXPECT_EQ(error_of({"export", log, "--format", "prometheus", "--table", "EVENTLOG1"}),
              "qvhost: " + log.string() +
                  ": there are no metrics of EVENTLOG1; there are of health, findings, sensors, "
                  "drives, volumes\n");
}

// A record is one line but where a value has lines within.
TEST_F(ShowReport, CsvHasARecordALine) {
    const auto store = store_with({
        record({{"a", "A", " value \n"s}, {"b", "B", "x\r\n"s}}),
        record({{"a", "A", "two\nlines\n \n\n"s}, {"b", "B", "\n"s}}),
        record({{"a", "A", "blanks  "s}, {"b", "B", 5}}),
    });
    const auto csv = "a,b\r\n\" value \",x\r\n\"two\nlines\",\"\"\r\n\"blanks  \",5\r\n";
    EXPECT_EQ(run({"export", store, "--format", "csv", "--table", "T"}).out, csv);
    EXPECT_EQ(
        run({"export", store, "--format", "csv", "--table", "T", "--raw"}).out,
        "a,b\r\n\" value \n\",\"x\r\n\"\r\n\"two\nlines\n \n\n\",\"\n\"\r\n\"blanks  \",5\r\n");
    EXPECT_EQ(run({"query", store, "SELECT a, b FROM T", "--format", "csv"}).out, csv);
}

TEST_F(ShowReport, WhatDoesNotGoTogetherIsToldFirst) {
    const auto store = store_with({});
    for (const std::vector<std::string>& misuse : std::vector<std::vector<std::string>>{
             {"--all", "T"},
             {"--format", "csv"},
             {"--format", "jsonl", "--all"},
             {"T", "EMPTY", "--format", "csv"},
             {"T", "--raw"},
             {"T", "--format", "yaml"},
         }) {
        std::vector<std::string> arguments{"show", store};
        arguments.insert(arguments.end(), misuse.begin(), misuse.end());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
    }
}

class ShowRecorded : public ReportTest, public testing::WithParamInterface<std::string> {};

// Tables with records, those of the inventory among them, and one without.
std::set<std::string> tables_of(const json& report) {
    std::set<std::string> tables{"drives", "sensors", "volumes", "events", "findings", "ARPINFO"};
    for (const auto& record : report["records"]) tables.insert(record["table"]);
    return tables;
}

std::set<std::string> words_of(const std::string& text) {
    std::set<std::string> words;
    std::istringstream parts(text);
    for (std::string word; parts >> word;) words.insert(word);
    return words;
}

// Words of letters and digits that fit any column.
bool is_plain(const std::string& word) {
    return word.size() <= 16 && std::all_of(word.begin(), word.end(), [](unsigned char c) {
               return c < 0x80 && std::isalnum(c);
           });
}

// On a terminal no line is wider than it, and no word is cut.
TEST_P(ShowRecorded, FitsTheTerminal) {
    const auto log = replayed(GetParam());
    const auto report = json::parse(read_file(log / "report" / "report.json"));
    std::map<std::string, std::set<std::string>> told;
    for (const auto& one : report["records"]) {
        const auto id = one["table"].get<std::string>();
        for (const auto& property : one["properties"]) {
            if (id != "LSILINK" && property["value"].is_string())
                told[id].merge(words_of(property["value"].get<std::string>()));
        }
    }
    for (const unsigned width : {80u, 120u, 200u}) {
        const std::map<std::string, std::string> environment{{"COLUMNS", std::to_string(width)}};
        for (const auto& table : tables_of(report)) {
            const auto text =
                run(Invocation{.arguments = {"show", log, table}, .environment = environment}).out;
            for (const auto& line : lines_of(text))
                ASSERT_LE(qvhost::display_width(line), width) << table << ": " << line;
            const auto shown_words = words_of(text);
            for (const auto& word : told[table]) {
                if (is_plain(word)) {
                    EXPECT_TRUE(shown_words.contains(word))
                        << table << " at " << width << ": " << word;
                }
            }
        }
    }
}

// Through a pipe each record of a table with a header row is one line.
TEST_P(ShowRecorded, APipeGetsARecordALine) {
    const auto log = replayed(GetParam());
    const auto report = json::parse(read_file(log / "report" / "report.json"));
    std::map<std::string, std::size_t> records;
    for (const auto& one : report["records"]) ++records[one["table"].get<std::string>()];
    for (const auto& module : report["modules"]) {
        for (const auto& table : module["tables"]) {
            const auto id = table["id"].get<std::string>();
            const auto& layout = table["layout"];
            if (records[id] == 0 || (layout.is_object() && layout["kind"] == "columns")) continue;
            const auto lines = lines_of(run({"show", log, id}).out);
            EXPECT_EQ(lines.size(), records[id] + 3) << id << ": what it is, titles, a rule";
        }
    }
    for (const auto& [kind, entities] : report["inventory"].items()) {
        if (entities.empty()) continue;
        EXPECT_EQ(lines_of(run({"show", log, kind}).out).size(), entities.size() + 3) << kind;
    }
}

std::string test_name(const testing::TestParamInfo<std::string>& info) {
    auto name = info.param;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Recorded, ShowRecorded, testing::ValuesIn(some_of(recorded_servers())),
                         test_name);

}  // namespace

}  // namespace test
