// Inventory, findings and health in a store: what is written is read back, and a store of somebody else is
// read for what it is worth.
#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "findings/collector.h"
#include "inventory/fields.h"
#include "place.h"
#include "report/verdict_json.h"
#include "store/typed_table.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

using namespace qvhost;
using namespace std::string_literals;

namespace {

using findings::Finding;
using findings::Health;
using findings::HealthWord;
using findings::Severity;
using findings::Subsystem;
using findings::Verdict;
using inventory::Inventory;

class VerdictTables : public test::Place {
protected:
    std::string path() const { return dir / "report.sqlite"; }

    void fill(const std::function<void(Store&)>& write) const {
        Store store(path(), Store::Mode::create);
        write(store);
        store.commit();
    }
    // As somebody changes it by hand.
    void change(const std::string& sql) const {
        SQLite::Database(path(), SQLite::OPEN_READWRITE).exec(sql);
    }
    std::string ask(const std::string& sql) const {
        SQLite::Database db(path());
        SQLite::Statement query(db, sql);
        std::string answer;
        while (query.executeStep()) {
            for (int i = 0; i < query.getColumnCount(); ++i)
                answer += (i ? "|" : "") + query.getColumn(i).getString();
            answer += "\n";
        }
        return answer;
    }
    Inventory inventory() const { return read_inventory(Store(path(), Store::Mode::read)); }
    Verdict verdict() const { return read_verdict(Store(path(), Store::Mode::read)); }
};

// A value of a field, different from that of every other.
void set(inventory::Text& text, int number) { text = "text '\" \n" + std::to_string(number); }
void set(inventory::Integer& integer, int number) {
    integer = std::numeric_limits<std::int64_t>::max() - number;
}
void set(inventory::Real& real, int number) { real = number + 0.1; }
void set(inventory::Flag& flag, int number) { flag = number % 2 == 0; }
void set(inventory::Texts& texts, int number) { texts = {"one", std::to_string(number)}; }

// Of each kind an entity with all fields, one without any, and one with the values next to none.
Inventory full_and_empty() {
    Inventory all;
    int number = 0;
    inventory::each_kind([&](const auto& kind) {
        auto& list = all.*kind.list;
        list.resize(3);
        for (const auto& field : kind.fields) {
            std::visit([&](auto member) { set(list[0].*member, ++number); }, field.member);
            std::visit(
                [&](auto member) {
                    using Value = std::remove_reference_t<decltype(list[2].*member)>;
                    if constexpr (!std::is_same_v<Value, inventory::Texts>)
                        (list[2].*member).emplace();
                },
                field.member);
        }
        list[0].place = {"capture " + std::to_string(++number), number};
    });
    return all;
}

// Every field of every entity, with the field's name, as one text.
std::string told(const Inventory& all) {
    std::ostringstream out;
    put_inventory(all, true, out);
    return out.str();
}

TEST_F(VerdictTables, EveryFieldOfEveryEntityIsReadBack) {
    const auto written = full_and_empty();
    fill([&](Store& store) { write_inventory(store, written); });
    EXPECT_EQ(told(inventory()), told(written));
    EXPECT_EQ(ask("PRAGMA integrity_check"), "ok\n");
}

TEST_F(VerdictTables, SqlHasTheTypesOfTheContract) {
    Inventory all;
    all.sensors.push_back({.place = {"sensorinfo.txt", 3},
                           .name = "PS1",
                           .number = {},
                           .kind = "discrete",
                           .reading = {},
                           .unit = {},
                           .status = "ok",
                           .lnr = {},
                           .lc = {},
                           .lnc = {},
                           .unc = 40.0,
                           .uc = {},
                           .unr = {},
                           .states = {"present", "power lost"},
                           .elsewhere = {}});
    all.drives.resize(1);
    all.drives[0].is_foreign = true;
    all.drives[0].slot = 7;
    fill([&](Store& store) { write_inventory(store, all); });
    EXPECT_EQ(ask("SELECT name, number, typeof(reading), unc, typeof(unc), states, capture, line "
                  "FROM sensors"),
              "PS1||null|40.0|real|present, power lost|sensorinfo.txt|3\n");
    EXPECT_EQ(ask("SELECT is_foreign, typeof(is_foreign), slot, typeof(slot), smart_alert IS NULL "
                  "FROM drives"),
              "1|integer|7|integer|1\n");
}

std::string told(const Verdict& verdict) {
    return json_of(verdict.findings).dump(1) + json_of(verdict.health).dump(1);
}

// Each severity, subsystem and word of health, full and empty.
Verdict every_word() {
    Verdict all;
    int number = 0;
    for (const auto severity : findings::kSeverities) {
        for (const auto subsystem : findings::kSubsystems) {
            const auto id = "rule:" + std::to_string(++number);
            all.findings.push_back({id,
                                    "rule",
                                    severity,
                                    subsystem,
                                    "subject\n" + id,
                                    "says '\"" + id,
                                    "2026-11-20T07:30:05",
                                    number,
                                    {{"a.txt", number}, {"b.txt", 1}},
                                    {{"drives", number}, {"sensors", 1}}});
        }
    }
    all.findings.push_back({});
    for (const auto subsystem : findings::kSubsystems) {
        const auto word = findings::kHealthWords[all.health.size() % 5];
        all.health.push_back({subsystem, word, {}, {}});
        if (word == HealthWord::ok) all.health.back().judged_by = {"a.txt", "b, c.txt"};
        if (word == HealthWord::unknown) all.health.back().missing = {"x, y", "", "z"};
    }
    return all;
}

TEST_F(VerdictTables, FindingsAndHealthAreReadBack) {
    const auto written = every_word();
    fill([&](Store& store) { write_verdict(store, written); });
    const auto read = verdict();
    EXPECT_EQ(told(read), told(written));
    ASSERT_EQ(read.findings.size(), written.findings.size());
    for (std::size_t i = 0; i < read.findings.size(); ++i)
        EXPECT_EQ(read.findings[i].entities, written.findings[i].entities);
}

TEST_F(VerdictTables, SqlFindsTheEntityOfAFinding) {
    Inventory all;
    all.drives.resize(2);
    all.drives[1].serial = "Z1";
    findings::Collector collector;
    collector.add({"Z1", "Drive 8:1", {findings::ref_to(all, all.drives[1])}}, "drive_failed",
                  "state Offln", {"c0_showall.txt", 41});
    fill([&](Store& store) {
        write_inventory(store, all);
        write_verdict(store, {collector.take(), {}});
    });
    EXPECT_EQ(ask("SELECT kind, number, drives.serial FROM findings "
                  "JOIN finding_entities ON finding_id = findings.id "
                  "JOIN drives ON kind = 'drives' AND drives.rowid = number"),
              "drives|2|Z1\n");
}

TEST_F(VerdictTables, ASecondWritingReplacesTheFirst) {
    fill([](Store& store) {
        write_verdict(store, every_word());
        write_inventory(store, full_and_empty());
    });
    {
        Store store(path(), Store::Mode::update);
        write_verdict(store, {});
        write_inventory(store, {});
        store.commit();
    }
    EXPECT_EQ(told(verdict()), told(Verdict{}));
    EXPECT_EQ(told(inventory()), told(Inventory{}));
}

TEST_F(VerdictTables, AStoreWithoutThemHasNone) {
    fill([](Store& store) { store.add({"T", "name", -1, {{"a", "A", "one"s}}}); });
    EXPECT_EQ(told(verdict()), told(Verdict{}));
    EXPECT_EQ(told(inventory()), told(Inventory{}));
}

// Somebody made the table anew: without most columns, in another order, with values of other types.
TEST_F(VerdictTables, ValuesOfOtherTypesAreEmpty) {
    fill([](Store& store) {
        write_inventory(store, full_and_empty());
        write_verdict(store, every_word());
    });
    change(
        "DROP TABLE drives; CREATE TABLE drives(slot, model, media_errors, is_foreign, more);"
        "INSERT INTO drives VALUES('one', 5, 1.5, 'yes', 1);"
        "INSERT INTO drives VALUES(x'01', x'02', NULL, 2, 1);"
        "INSERT INTO drives VALUES(7, CAST(x'00ff' AS TEXT), 9223372036854775807, 0, 1);"
        "DROP TABLE sensors; CREATE TABLE sensors(name, reading, states, capture, line);"
        "INSERT INTO sensors VALUES('a', 'hot', 3, 4, 'five');"
        "INSERT INTO sensors VALUES('b', 3, ', ', 'c', 5);"
        "DROP TABLE volumes");
    const auto read = inventory();

    Inventory expected = full_and_empty();
    expected.volumes.clear();
    expected.drives.clear();
    expected.drives.resize(3);
    expected.drives[1].is_foreign = true;
    expected.drives[2].slot = 7;
    expected.drives[2].model = "\0\xff"s;
    expected.drives[2].media_errors = std::numeric_limits<std::int64_t>::max();
    expected.drives[2].is_foreign = false;
    expected.sensors.clear();
    expected.sensors.resize(2);
    expected.sensors[0].name = "a";
    expected.sensors[1].name = "b";
    expected.sensors[1].reading = 3;
    expected.sensors[1].states = {"", ""};
    expected.sensors[1].place = {"c", 5};

    // JSON has no byte that is not UTF-8.
    EXPECT_EQ(told(read), told(expected));
    ASSERT_EQ(read.drives.size(), 3u);
    EXPECT_EQ(read.drives[2].model, expected.drives[2].model);
    EXPECT_EQ(told(verdict()), told(every_word()));
}

TEST_F(VerdictTables, WordsThatAreNoneOfOursAreLeftOut) {
    fill([](Store& store) {
        Verdict small;
        small.findings.push_back({"known",
                                  "rule",
                                  Severity::warning,
                                  Subsystem::storage,
                                  "s",
                                  "says",
                                  {},
                                  1,
                                  {{"a.txt", 1}}});
        small.health.push_back({Subsystem::storage, HealthWord::warning, {}, {}});
        write_verdict(store, small);
    });
    change(
        "INSERT INTO findings(id,rule,severity,subsystem,subject,says,time,count) VALUES('a','r','fatal','storage','s','t',NULL,1);"
        "INSERT INTO findings(id,rule,severity,subsystem,subject,says,time,count) VALUES('b','r','critical','kitchen','s','t',NULL,1);"
        "INSERT INTO findings(severity,subsystem) VALUES('critical','bmc');"
        "INSERT INTO finding_evidence VALUES('nobody','b.txt',1);"
        "INSERT INTO finding_evidence VALUES(NULL,NULL,'two');"
        "INSERT INTO health VALUES('kitchen','ok');"
        "INSERT INTO health VALUES('power','great');"
        "INSERT INTO health VALUES(x'00',NULL);"
        "INSERT INTO health_missing VALUES('kitchen','spoons');"
        "DROP TABLE health_captures; CREATE TABLE health_captures(capture);"
        "INSERT INTO health_captures VALUES('a.txt')");
    Verdict expected;
    expected.findings.push_back({"known",
                                 "rule",
                                 Severity::warning,
                                 Subsystem::storage,
                                 "s",
                                 "says",
                                 {},
                                 1,
                                 {{"a.txt", 1}}});
    expected.findings.push_back(
        {"", "", Severity::critical, Subsystem::bmc, "", "", {}, 0, {{"", 0}}});
    expected.health.push_back({Subsystem::storage, HealthWord::warning, {}, {}});
    EXPECT_EQ(told(verdict()), told(expected));
}

TEST_F(VerdictTables, ARowIsToldAsItStands) {
    using Rows = std::vector<std::vector<TypedValue>>;
    const Rows rows{{"a text"s, std::int64_t{7}, 1.5},
                    {TypedValue(), TypedValue(), TypedValue()},
                    {""s, std::int64_t{-1}, 0.25}};
    constexpr auto kColumns = std::to_array<TypedColumn>({
        {"one", ColumnType::text},
        {"two", ColumnType::integer},
        {"three", ColumnType::real},
    });
    fill([&](Store& store) {
        TypedTableWriter table(store, "sensors", kColumns);
        for (const auto& row : rows) table.add(row);
    });
    Rows told;
    each_stored_row(Store(path(), Store::Mode::read), "sensors",
                    [&](const std::vector<TypedValue>& row) { told.push_back(row); });
    EXPECT_EQ(told, rows);
}

// A view may never end; SQLite's message of a table without row ids names the file.
TEST_F(VerdictTables, ATableThatIsNoneIsRefused) {
    fill([](Store& store) { write_verdict(store, every_word()); });
    change(
        "DROP TABLE health;"
        "CREATE TABLE health(subsystem PRIMARY KEY, health) WITHOUT ROWID");
    try {
        verdict();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), path() + ": no such column: rowid");
    }
    change("DROP TABLE health; CREATE VIEW health AS SELECT 'power' subsystem, 'ok' health");
    EXPECT_THROW(verdict(), std::runtime_error);
}

// The names that no table of records takes are those of the tables that are written.
TEST_F(VerdictTables, AllTheirNamesAreReserved) {
    fill([](Store& store) {
        write_inventory(store, {});
        write_verdict(store, {});
        EventWriter events(store);
    });
    std::string reserved;
    auto names = std::vector<std::string>(kTypedTables.begin(), kTypedTables.end());
    std::sort(names.begin(), names.end());
    for (const auto& name : names) reserved += name + "\n";
    EXPECT_EQ(ask("SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE 'qv_%' "
                  "ORDER BY name"),
              reserved);
}

TEST_F(VerdictTables, ATableOfAPlugInKeepsItsRows) {
    const Record drive{"DRIVES", "Drive", -1, {{"slot", "Slot", "first"s}}};
    const Record event{"events", "Event", 3, {{"text", "Text", "ours"s}, {"time", "Time", 5}}};
    fill([&](Store& store) {
        store.add_module("M", "Module");
        store.add_table("M", "DRIVES");
        store.add(drive);
        store.add(event);
        write_inventory(store, full_and_empty());
        EventWriter(store).add({{"sel.txt", 1}, "bmc", {}, {}, {}, {}, "theirs"});
    });
    {
        // As when a collection that was cut off is judged again.
        Store store(path(), Store::Mode::update);
        write_inventory(store, full_and_empty());
        EventWriter(store).add({{"sel.txt", 1}, "bmc", {}, {}, {}, {}, "theirs"});
        store.add(drive);
        store.commit();
    }
    std::vector<Record> records;
    Store(path(), Store::Mode::read).each_record([&](const Record& one) {
        records.push_back(one);
    });
    EXPECT_EQ(records, (std::vector<Record>{drive, event, drive}));
    EXPECT_EQ(ask("SELECT id, sql_name FROM qv_table ORDER BY id"),
              "DRIVES|DRIVES_2\nevents|events_2\n");
    EXPECT_EQ(ask("SELECT slot FROM DRIVES_2"), "first\nfirst\n");
    EXPECT_EQ(ask("SELECT text FROM events"), "theirs\n");
    EXPECT_EQ(told(inventory()), told(full_and_empty()));
}

}  // namespace
