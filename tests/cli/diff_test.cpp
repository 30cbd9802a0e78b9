// "qvhost diff": exit statuses, every format, and reports as bad as anybody can make them.
#include <sqlite3.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "report_under_test.h"
#include "store/store.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using nlohmann::json;
using qvhost::findings::HealthWord;
using qvhost::findings::kSubsystems;
using qvhost::findings::Severity;
using qvhost::findings::Subsystem;
using qvhost::findings::Verdict;
using qvhost::inventory::Drive;
using qvhost::inventory::Event;
using qvhost::inventory::Inventory;

using EventSeverity = qvhost::inventory::Severity;

Drive drive(int slot, const std::string& serial) {
    Drive one;
    one.place = {"c0.txt", slot + 1};
    one.controller = 0;
    one.enclosure = 8;
    one.slot = slot;
    one.serial = serial;
    one.state = "Onln";
    return one;
}

Event event(EventSeverity severity, const std::string& time, const std::string& text) {
    return {{"sel.txt", 1}, "bmc", time, {}, severity, "Fan 1", text};
}

struct Contents {
    Inventory inventory;
    Verdict verdict;
    std::vector<Event> events;
    std::string host = "web1", finished = "2026-11-14T06:00:00Z";
    std::vector<qvhost::Record> records;
    bool has_verdict = true;
};

// A healthy server with three drives and two events.
Contents server() {
    Contents contents;
    contents.inventory.drives = {drive(1, "D1"), drive(2, "D2"), drive(3, "D3")};
    for (const auto subsystem : kSubsystems)
        contents.verdict.health.push_back({subsystem, HealthWord::ok, {"c0.txt"}, {}});
    contents.events = {event(EventSeverity::info, "2026-11-01T00:00:00", "started"),
                       event(EventSeverity::warning, "2026-11-02T00:00:00", "slow")};
    contents.records = {record({{"a", "A", "1"s}, {"b", "B", 2}}), record({{"a", "A", "x"s}})};
    return contents;
}

class Diff : public ReportTest {
protected:
    fs::path store_of(const Contents& contents) {
        const auto file = dir() / ("store" + std::to_string(++stores_) + ".sqlite");
        qvhost::Store store(file, qvhost::Store::Mode::create);
        store.set_meta("status", "complete");
        store.set_meta("host", contents.host);
        store.set_meta("finished", contents.finished);
        store.add_module("M", "Module");
        store.add_table("M", "T");
        for (const auto& one : contents.records) store.add(one);
        if (contents.has_verdict) {
            qvhost::write_inventory(store, contents.inventory);
            qvhost::EventWriter events(store);
            for (const auto& one : contents.events) events.add(one);
            qvhost::write_verdict(store, contents.verdict);
        }
        store.commit();
        return file;
    }

    Outcome diff(const Contents& from, const Contents& to, std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"diff", store_of(from), store_of(to)});
        return run(more);
    }

    int stores_ = 0;
};

// What happened to the server: a drive replaced, a finding, events.
Contents changed() {
    auto contents = server();
    contents.finished = "2026-11-21T06:00:00Z";
    contents.inventory.drives[1].serial = "NEW";
    contents.verdict.health[static_cast<std::size_t>(Subsystem::storage)].health =
        HealthWord::warning;
    contents.verdict.findings.push_back({"drive_rebuild:NEW",
                                         "drive_rebuild",
                                         Severity::warning,
                                         Subsystem::storage,
                                         "Drive 8:2",
                                         "is being rebuilt",
                                         {},
                                         1,
                                         {{"c0.txt", 3}}});
    contents.events.erase(contents.events.begin());
    for (const char* time : {"2026-11-20T00:00:00", "2026-11-20T01:00:00"})
        contents.events.push_back(event(EventSeverity::critical, time, "stopped"));
    contents.records[0].properties[1].value = 3;
    return contents;
}

TEST_F(Diff, SaysNothingOfAReportAndItself) {
    const auto outcome = diff(server(), server());
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "old: web1, 2026-11-14T06:00:00Z (" +
                               (dir() / "store1.sqlite").string() +
                               ")\nnew: web1, 2026-11-14T06:00:00Z (" +
                               (dir() / "store2.sqlite").string() + ")\nNothing changed.\n");
    const auto raw = diff(server(), server(), {"--raw"});
    EXPECT_EQ(raw.exit, 0);
    EXPECT_NE(raw.out.find("Nothing changed."), std::string::npos);
}

TEST_F(Diff, SaysWhatNeitherReportCouldRead) {
    auto contents = server();
    contents.verdict.health[static_cast<std::size_t>(Subsystem::storage)] = {
        Subsystem::storage, HealthWord::unknown, {}, {"storcli is not installed"}};
    const auto outcome = diff(contents, contents);
    EXPECT_EQ(outcome.exit, 0);
    const auto said =
        "\nRead in neither report\n  storage: storcli is not installed\n"
        "\nNothing changed in what both reports could read.\n"s;
    EXPECT_TRUE(outcome.out.ends_with(said)) << outcome.out;
    const auto page = diff(contents, contents, {"--format", "html"}).out;
    EXPECT_NE(page.find("<p>Nothing changed in what both reports could read.</p>"),
              std::string::npos);
    const auto all = json::parse(diff(contents, contents, {"--format", "json"}).out);
    EXPECT_EQ(all["not_read_in_either"], json::parse(R"({"missing": [{"subsystem": "storage",
                                           "missing": "storcli is not installed"}]})"));
    EXPECT_EQ(all["same"], true);
}

TEST_F(Diff, OfOneDirectoryComparesItsLatestRunWithTheOneBefore) {
    const auto put = [&](const Contents& contents, const fs::path& run) {
        fs::create_directories(run / "report");
        fs::rename(store_of(contents), run / "report" / "report.sqlite");
    };
    const auto log_dir = dir() / "runs of web1";
    put(changed(), log_dir);
    const auto alone = run({"diff", log_dir});
    EXPECT_EQ(alone.exit, 2);
    EXPECT_EQ(alone.err,
              "qvhost: " + log_dir.string() + ": there is no earlier run; name two reports\n");
    auto earliest = server();
    earliest.host = "another";
    put(earliest, log_dir / "runs" / "20261101T060000Z");
    put(server(), log_dir / "runs" / "20261114T060000Z");
    const auto outcome = run({"diff", log_dir});
    EXPECT_EQ(outcome.exit, 1) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with(
        "old: web1, 2026-11-14T06:00:00Z (" + (log_dir / "runs" / "20261114T060000Z").string() +
        ")\nnew: web1, 2026-11-21T06:00:00Z (" + log_dir.string() + ")\n"))
        << outcome.out;
}

TEST_F(Diff, TellsWhatChanged) {
    const auto outcome = diff(server(), changed());
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_EQ(outcome.out,
              "old: web1, 2026-11-14T06:00:00Z (" + (dir() / "store1.sqlite").string() +
                  ")\nnew: web1, 2026-11-21T06:00:00Z (" + (dir() / "store2.sqlite").string() + R"()

Health
  storage: ok -> warning

Drives
  Drive 8:2 of controller 0: replaced: serial D2 -> NEW

Findings
  new  [warning] Drive 8:2: is being rebuilt

New events
  2 critical
    [critical] 2026-11-20T01:00:00 bmc: Fan 1: stopped (x 2)

Events that are gone
  1 info
    [info] 2026-11-01T00:00:00 bmc: Fan 1: started
)");
}

TEST_F(Diff, HasRowsOfTablesWhereTheyAreAskedFor) {
    auto to = server();
    to.records[0].properties[1].value = 3;
    EXPECT_EQ(diff(server(), to).exit, 0);
    const auto outcome = diff(server(), to, {"--raw"});
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.out.find("\nRows of T\n  - name: a=1, b=2\n  + name: a=1, b=3\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_EQ(outcome.out.find("Nothing changed."), std::string::npos);
    const auto all = json::parse(diff(server(), to, {"--raw", "--format", "json"}).out);
    EXPECT_EQ(all["raw"]["T"],
              (json{{"gone", {{{"name", "name"}, {"values", {{"a", "1"}, {"b", 2}}}}}},
                    {"new", {{{"name", "name"}, {"values", {{"a", "1"}, {"b", 3}}}}}}}));
    EXPECT_EQ(all["same"], false);
    const auto page = diff(server(), to, {"--raw", "--format", "html"});
    EXPECT_EQ(page.exit, 1);
    EXPECT_NE(page.out.find("<td>gone</td><td>name</td><td>a=1, b=2</td>"), std::string::npos);
}

TEST_F(Diff, GivesProgramsEverything) {
    const auto outcome = diff(server(), changed(), {"--format", "json"});
    EXPECT_EQ(outcome.exit, 1);
    const auto all = json::parse(outcome.out);
    EXPECT_EQ(all["format"], 1);
    EXPECT_EQ(all["same"], false);
    EXPECT_EQ(all["machines"], "same");
    EXPECT_EQ(all["old"]["host"], "web1");
    EXPECT_EQ(all["new"]["finished"], "2026-11-21T06:00:00Z");
    EXPECT_EQ(all["health"],
              json::array({{{"subsystem", "storage"}, {"from", "ok"}, {"to", "warning"}}}));
    EXPECT_EQ(all["changes"],
              json::array({{{"kind", "drives"},
                            {"subject", "Drive 8:2 of controller 0"},
                            {"what", "replaced"},
                            {"trend", "none"},
                            {"fields", {{{"field", "serial"}, {"from", "D2"}, {"to", "NEW"}}}},
                            {"old", {{"capture", "c0.txt"}, {"line", 3}}},
                            {"new", {{"capture", "c0.txt"}, {"line", 3}}}}}));
    EXPECT_EQ(all["findings"]["new"][0]["id"], "drive_rebuild:NEW");
    EXPECT_EQ(all["findings"]["gone"], json::array());
    EXPECT_EQ(all["events"]["counts"]["new"], (json{{"critical", 2}, {"warning", 0}, {"info", 0}}));
    ASSERT_EQ(all["events"]["new"].size(), 2u);
    EXPECT_EQ(all["events"]["new"][0]["time"], "2026-11-20T00:00:00");
    EXPECT_EQ(all["events"]["gone"][0]["text"], "started");
    const auto same = json::parse(diff(server(), server(), {"--format", "json"}).out);
    EXPECT_EQ(same["same"], true);
    EXPECT_EQ(same["changes"], json::array());
}

TEST_F(Diff, SaysFirstThatThereAreTwoMachines) {
    auto to = server();
    to.host = "web2";
    const auto outcome = diff(server(), to);
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_TRUE(outcome.out.starts_with("These are reports of two machines.\n")) << outcome.out;
    EXPECT_EQ(json::parse(diff(server(), to, {"--format", "json"}).out)["machines"], "two");
    EXPECT_NE(
        diff(server(), to, {"--format", "html"}).out.find("These are reports of two machines."),
        std::string::npos);
}

// One more event of those that are there three times is one new event.
TEST_F(Diff, CountsEqualEvents) {
    auto from = server(), to = server();
    const auto again = event(EventSeverity::warning, "2026-11-02T00:00:00", "slow");
    from.events.insert(from.events.end(), 2, again);
    to.events.insert(to.events.end(), 3, again);
    const auto all = json::parse(diff(from, to, {"--format", "json"}).out);
    EXPECT_EQ(all["events"]["new"].size(), 1u);
    EXPECT_EQ(all["events"]["gone"].size(), 0u);
}

TEST_F(Diff, ShowsPeopleTheFirstEventsAndCountsTheRest) {
    auto to = server();
    for (int i = 0; i < 500; ++i)
        to.events.push_back(event(EventSeverity::info, "2026-11-03T00:00:00", std::to_string(i)));
    const auto outcome = diff(server(), to);
    EXPECT_NE(outcome.out.find("\n  500 info\n"), std::string::npos);
    EXPECT_NE(outcome.out.find("Fan 1: 19\n    and 480 more; --format json has them all\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_EQ(json::parse(diff(server(), to, {"--format", "json"}).out)["events"]["new"].size(),
              500u);
}

TEST_F(Diff, ColoursOnATerminalAlone) {
    const auto piped = diff(server(), changed());
    EXPECT_EQ(piped.out.find('\033'), std::string::npos);
    Invocation invocation;
    invocation.program = {"script", "-qec",
                          "'" QV_PROGRAM "' diff "s + store_of(server()).string() + " " +
                              store_of(changed()).string(),
                          "/dev/null"};
    invocation.environment = {{"TERM", "xterm"}};
    const auto shown = run(invocation);
    EXPECT_EQ(shown.exit, 1);
    EXPECT_NE(shown.out.find("\033[31m  [critical] 2026"), std::string::npos);
}

// ---- Trouble ------------------------------------------------------------------------------------------

TEST_F(Diff, EndsWithTwoWhereItCannotTell) {
    const auto good = store_of(server());
    write_file(dir() / "text.sqlite", "no store\n");
    auto without = server();
    without.has_verdict = false;
    const auto old = store_of(without);
    for (const auto& bad : {dir() / "none", dir() / "text.sqlite", old, dir()}) {
        for (const auto& arguments : {std::vector<std::string>{"diff", bad, good},
                                      std::vector<std::string>{"diff", good, bad}}) {
            const auto outcome = run(arguments);
            EXPECT_EQ(outcome.exit, 2) << bad;
            EXPECT_EQ(outcome.out, "") << bad;
            EXPECT_TRUE(outcome.err.starts_with("qvhost: ")) << outcome.err;
            EXPECT_EQ(lines_of(outcome.err).size(), 1u) << outcome.err;
        }
    }
    EXPECT_EQ(run({"diff", good, good, "--format", "xml"}).exit, 2);
    EXPECT_EQ(run({"diff"}).exit, 2);
    Invocation full{{"diff", good, good}};
    full.out_file = "/dev/full";
    EXPECT_EQ(run(full).exit, 2);
}

// ---- Hostile reports ----------------------------------------------------------------------------------

const std::string kHostile =
    "</td><script>alert(1)</script><img src=x onerror=alert(1)>&amp;\"'\033[2J\n"
    "old: forged\xe2\x80\xae\xff";

Contents hostile() {
    auto contents = changed();
    contents.host = kHostile;
    contents.inventory.drives[0].serial = kHostile;
    contents.inventory.drives[0].state = kHostile;
    contents.inventory.drives[0].firmware = kHostile;
    contents.verdict.findings[0].id = kHostile;
    contents.verdict.findings[0].subject = kHostile;
    contents.verdict.findings[0].says = kHostile;
    contents.verdict.health[0].missing = {kHostile};
    contents.events.push_back(event(EventSeverity::critical, kHostile, kHostile));
    contents.records.push_back(record({{"a", "A", kHostile}, {kHostile, kHostile, kHostile}}));
    return contents;
}

TEST_F(Diff, ShowsHostileTextAsText) {
    for (const bool backwards : {false, true}) {
        for (const char* format : {"text", "json", "html"}) {
            const auto outcome = backwards
                                     ? diff(hostile(), server(), {"--raw", "--format", format})
                                     : diff(server(), hostile(), {"--raw", "--format", format});
            EXPECT_EQ(outcome.exit, 1);
            EXPECT_EQ(outcome.out.find('\033'), std::string::npos) << format;
            EXPECT_EQ(outcome.out.find("\xe2\x80\xae"), std::string::npos) << format;
            EXPECT_EQ(outcome.out.find('\xff'), std::string::npos) << format;
            EXPECT_EQ(outcome.out.find("\nold: forged"), std::string::npos) << format;
            if (format == "html"s) {
                EXPECT_EQ(outcome.out.find("<script"), std::string::npos);
                EXPECT_EQ(outcome.out.find("<img"), std::string::npos);
                EXPECT_NE(outcome.out.find("&lt;script&gt;alert(1)"), std::string::npos);
            }
            EXPECT_EQ(json::accept(outcome.out), format == "json"s);
        }
    }
}

TEST_F(Diff, MakesAPageThatAsksForNothing) {
    const auto page = diff(server(), changed(), {"--format", "html"}).out;
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
    EXPECT_TRUE(page.ends_with("</body>\n</html>\n"));
    EXPECT_NE(page.find("default-src 'none'; style-src 'unsafe-inline'"), std::string::npos);
    for (const char* word : {"<script", "http:", "https:", "src=", "href=", "url(", "@import"})
        EXPECT_EQ(page.find(word), std::string::npos) << word;
    const auto count = [&](const std::string& text) {
        std::size_t found = 0;
        for (auto at = page.find(text); at != std::string::npos; at = page.find(text, at + 1))
            ++found;
        return found;
    };
    for (const auto& name : {"table"s, "section"s, "tr"s, "td"s, "h2"s})
        EXPECT_EQ(count("<" + name + ">") + count("<" + name + " "), count("</" + name + ">"))
            << name;
    EXPECT_EQ(count("<h2>"), 5u);
}

void change(const fs::path& store, const char* sql) {
    sqlite3* opened = nullptr;
    ASSERT_EQ(sqlite3_open(store.c_str(), &opened), SQLITE_OK);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(opened, sqlite3_close);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(opened, sql, nullptr, nullptr, &error), SQLITE_OK) << error;
}

// Columns of other types, missing columns, and what computes.
TEST_F(Diff, StandsForgedStores) {
    const auto good = store_of(server());
    const auto forged = store_of(changed());
    change(forged,
           "UPDATE drives SET slot='x', serial=7, media_errors=x'00ff', state=1e999; "
           "UPDATE events SET severity=9, source=NULL, time=x'00', text=NULL; "
           "UPDATE findings SET severity='worst'; "
           "INSERT INTO finding_entities VALUES('drive_rebuild:NEW', 'drives', -9); "
           "UPDATE health SET health='fine' WHERE subsystem='power'");
    for (const char* format : {"text", "json", "html"}) {
        const auto outcome = run({"diff", good, forged, "--format", format, "--raw"});
        EXPECT_EQ(outcome.exit, 1) << outcome.err;
    }
    const auto bare = store_of(server());
    change(bare, "DROP TABLE drives; DROP TABLE events; ALTER TABLE sensors DROP COLUMN name");
    EXPECT_EQ(run({"diff", good, bare}).exit, 1);
    const auto computing = store_of(server());
    change(computing,
           "DROP TABLE events; CREATE VIEW events AS WITH RECURSIVE n(i) AS (SELECT 1 "
           "UNION ALL SELECT i + 1 FROM n) SELECT 'bmc' AS source, i AS text FROM n");
    EXPECT_EQ(run({"diff", good, computing}).exit, 2);
}

TEST_F(Diff, LeavesTheReportsAsTheyAre) {
    const auto from = store_of(server()), to = store_of(changed());
    const auto before = read_file(from) + read_file(to);
    run({"diff", from, to, "--raw"});
    EXPECT_EQ(read_file(from) + read_file(to), before);
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(dir()))
        files += entry.path().extension() != ".sqlite" ? 0u : 1u;
    EXPECT_EQ(files, 2u);
}

// ---- Recorded servers ---------------------------------------------------------------------------------

TEST_F(Diff, FindsNothingBetweenTwoReplaysOfAServer) {
    const auto first = replayed("x86_64-kp420-two-megaraid");
    fs::rename(first, dir() / "first");
    const auto second = replayed("x86_64-kp420-two-megaraid");
    const auto outcome = run({"diff", dir() / "first", second});
    EXPECT_EQ(outcome.exit, 0) << outcome.out;
}

}  // namespace

}  // namespace test
