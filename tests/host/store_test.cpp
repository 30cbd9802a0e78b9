#include "store/store.h"
#include "store/declared_table.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "place.h"

using namespace qvhost;

namespace {

constexpr const char* kNoStore =
    ": not a store of qvhost; a report is a log directory or its report/report.sqlite";

class StoreTest : public test::Place {
protected:
    std::string path() const { return dir / "report.sqlite"; }

    static std::vector<Record> records(const Store& store) {
        std::vector<Record> found;
        store.each_record([&](const Record& record) { found.push_back(record); });
        return found;
    }
    std::vector<Record> records() const { return records(Store(path(), Store::Mode::read)); }

    void fill(const std::vector<Record>& added) const {
        Store store(path(), Store::Mode::create);
        for (const auto& record : added) store.add(record);
        store.commit();
    }

    // As somebody would ask by hand.
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
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(dir))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(StoreTest, TablesArePleasantToAsk) {
    {
        Store store(path(), Store::Mode::create);
        store.add_module("M", "Module");
        store.add_table("M", "SENSORINFO");
        store.add_table("M", "EMPTY");
        store.set_layout("EMPTY", RowLayout{{"x", "y"}, {50, 50}, false});
        store.add(
            {"SENSORINFO", "Sensor", -1, {{"item1", "Name", "CPU"}, {"item2", "Reading", 41}}});
        store.add(
            {"SENSORINFO", "Sensor", -1, {{"item1", "Name", "FAN"}, {"item3", "Unit", "RPM"}}});
        store.commit();
    }
    EXPECT_EQ(ask("select qv_seq, item1, item2, item3, typeof(item2) from SENSORINFO"),
              "1|CPU|41||integer\n2|FAN||RPM|null\n");
    EXPECT_EQ(ask("select x, y from EMPTY"), "");
    EXPECT_EQ(ask("pragma integrity_check"), "ok\n");
    EXPECT_EQ(files(), std::vector<std::string>{"report.sqlite"});
    struct stat info {};
    ASSERT_EQ(::stat(path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
}

TEST_F(StoreTest, KeepsModulesTablesLayoutsAndFacts) {
    {
        Store store(path(), Store::Mode::create);
        store.add_module("B", "Second");
        store.add_module("A", "First");
        store.add_table("A", "T2");
        store.add_table("B", "T1");
        store.set_layout("T1", ColumnLayout{{"a", "b"}, 30, 2});
        store.set_layout("T2", RowLayout{{"a"}, {1, 2}, true});
        store.set_reason("T1", "nothing there");
        store.set_meta("started", "now");
        store.set_meta("started", "later");
        store.commit();
    }
    const Store store(path(), Store::Mode::read);
    const auto modules = store.modules();
    ASSERT_EQ(modules.size(), 2u);
    EXPECT_EQ(modules[0].name + modules[0].display, "BSecond");
    ASSERT_EQ(modules[0].tables.size(), 1u);
    EXPECT_EQ(modules[0].tables[0].id, "T1");
    EXPECT_EQ(modules[0].tables[0].layout, Layout(ColumnLayout{{"a", "b"}, 30, 2}));
    EXPECT_EQ(modules[0].tables[0].reason, "nothing there");
    EXPECT_EQ(modules[1].tables[0].layout, Layout(RowLayout{{"a"}, {1, 2}, true}));
    EXPECT_EQ(store.meta("started"), "later");
    EXPECT_EQ(store.meta("unknown"), "");
}

TEST_F(StoreTest, KeepsCommandsAndWhatBecameOfThem) {
    const std::vector<CommandInfo> commands = {
        {.text = "ipmitool sensor >'/l/a, b'",
         .lane = 2,
         .origin = "host",
         .tool = "ipmitool",
         .started = "2026-11-21T01:20:40.123Z",
         .seconds = 1.5,
         .exit = 1,
         .captures = {"a", "b"},
         .standard_error = std::string("no\0 BMC\n", 9)},
        {.text = "killed", .started = "", .seconds = 2, .signal = 9, .stopped_by = "time"},
        {.text = "not asked", .stopped_by = "run"},
        {.text = "running", .started = "", .remark = "process 7 could not be ended and was left"},
    };
    {
        Store store(path(), Store::Mode::create);
        store.set_commands({{.text = "replaced"}});
        store.set_commands(commands);
        store.commit();
    }
    EXPECT_EQ(Store(path(), Store::Mode::read).commands(), commands);
    std::vector<std::string> told;
    for (const auto& command : commands)
        told.push_back(outcome(command) + (was_cut_off(command) ? " (cut off)" : ""));
    EXPECT_EQ(told, (std::vector<std::string>{
                        "exit code 1",
                        "stopped at its time limit (cut off)",
                        "not asked: the time was used up (cut off)",
                        "it was running when the collection ended; process 7 could not be ended "
                        "and was left (cut off)",
                    }));
}

// Exit code 127 is the shell's, which says so, or that of a tool that lacked something itself.
TEST(Outcome, SaysNotInstalledOnlyOfWhatTheShellDidNotFind) {
    const std::string missing = "exit code 127: not installed", failed = "exit code 127";
    const struct {
        std::string text, standard_error, said;
    } kRows[] = {
        {"/x/qv_tools/storcli show", "sh: 1: /x/qv_tools/storcli: not found\n", missing},
        {"storcli show", "sh: 1: storcli: not found\n", missing},
        {"storcli show", "a word before\nbash: line 1: storcli: command not found", missing},
        {"storcli show", "bash: line 1: /opt/storcli: No such file or directory\n", missing},
        {"storcli show", "/opt/storcli: 4: lspci: not found\n", failed},
        {"storcli show", "sh: 1: mystorcli: not found\n", failed},
        {"storcli show", "storcli: controller 0: not found\n", failed},
        {"storcli show", "", failed},
        {"storcli show >c0.txt 2>&1", "", missing},
        {"storcli show", "storcli: error while loading shared libraries: libx.so.1: cannot open\n",
         failed + ": a library is missing"},
    };
    for (const auto& [text, standard_error, said] : kRows) {
        const CommandInfo command{.text = text,
                                  .tool = "storcli",
                                  .started = "2026-11-21T01:20:40Z",
                                  .seconds = 0.1,
                                  .exit = 127,
                                  .standard_error = standard_error};
        EXPECT_EQ(outcome(command), said) << text << ": " << standard_error;
    }
}

// As older programs kept them.
TEST(CommandOfWords, TellsTheSameWords) {
    const struct {
        const char* outcome;
        bool cut_off;
    } ends[] = {
        {"", false},
        {"exit code 1", false},
        {"exit code 126", false},
        {"exit code 127: not installed", false},
        {"exit code 137: killed by signal 9", true},
        {"killed by signal 11", true},
        {"stopped at its time limit", true},
        {"stopped because it said no more; process 7 could not be ended and was left", true},
        {"stopped when the time was used up", true},
        {"what it wrote could not be read to its end: Input/output error", true},
        {"it was running when the collection ended", true},
    };
    for (const auto& end : ends) {
        const auto command = command_of_words("tool", 1, end.outcome, end.cut_off);
        EXPECT_EQ(outcome(command), end.outcome);
        EXPECT_EQ(was_cut_off(command), end.cut_off) << end.outcome;
    }
}

TEST_F(StoreTest, KeepsWhatIsDeclaredOfTables) {
    const std::vector<DeclaredTable> tables = {
        {"T1",
         "First",
         "always",
         "tool",
         true,
         "{P}tool >{L}a.txt",
         "a.txt",
         "MC",
         "no such card",
         {"lspci | wc -l", "uname -i"}},
        {"qv_declared", "", "never", "", false, "", "", "", "", {}},
    };
    {
        Store store(path(), Store::Mode::create);
        for (const char* table : {"T1", "qv_declared", "other"}) store.add_table("M", table);
        write_declared_tables(store, std::vector<DeclaredTable>{tables[1]});
        write_declared_tables(store, tables);
        store.commit();
    }
    const Store store(path(), Store::Mode::read);
    EXPECT_EQ(declared_tables(store), tables);
    const std::vector<ModuleInfo> modules = store.modules();
    std::vector<std::string> titles;
    for (const auto& table : modules.at(0).tables) titles.push_back(table.title);
    EXPECT_EQ(titles, (std::vector<std::string>{"First", "", ""}));
}

TEST_F(StoreTest, LosesNothing) {
    const std::string odd("\0\xff\n'\"; drop table x", 18);
    const std::vector<Record> all = {
        {"T", "one", -1, {{"a", "A", ""}, {"b", "B", 0}}},
        {"T", "one", -1, {{"b", "B", 0}, {"a", "A", ""}}},  // another order
        {"T", "two", 7, {{"a", "other label", "x"}}},       // another name, index, label
        {"T", "one", -1, {}},                               // no property
        {"t", "one", -1, {{"A", "", 1}, {"a", "", 2}, {"qv_seq", "", 3}, {"rowid", "", 4}}},
        {"", "", -2147483647, {{"", "", odd}}},
        {"sqlite_master", "qv_run", 0, {{odd, odd, odd}}},
        {"T", "one", -1, {{"a", "A", "1"}, {"b", "B", "2"}}},  // text stays text
        {"T", "one", -1, {{"a", "A", 1}, {"b", "B", 2}}},
        {"T", "one", -1, {{"a", "A", "first"}, {"a", "A", "again"}}},
    };
    fill(all);
    EXPECT_EQ(records(), all);
    const Store store(path(), Store::Mode::read);
    std::vector<Record> of_t;
    store.each_record("T", [&](const Record& record) { of_t.push_back(record); });
    EXPECT_EQ(of_t.size(), 7u);
    EXPECT_EQ(of_t[0], all[0]);
    EXPECT_EQ(of_t[6], all[9]);
}

TEST_F(StoreTest, MorePropertiesThanSqlHasColumns) {
    Record wide{"WIDE", "n", -1, {}};
    for (int i = 0; i < 2500; ++i)
        wide.properties.push_back({"p" + std::to_string(i), "", "v" + std::to_string(i)});
    fill({wide, wide});
    EXPECT_EQ(records(), (std::vector<Record>{wide, wide}));
}

TEST_F(StoreTest, LosesNothingOfRandomRecords) {
    std::mt19937_64 random(test::first_random());
    const auto below = [&](unsigned long n) { return random() % n; };
    const auto text = [&](unsigned long alphabet) {
        std::string bytes;
        for (auto n = below(6); n > 0; --n) bytes += static_cast<char>(below(alphabet));
        return bytes;
    };
    std::vector<Record> all;
    for (int i = 0; i < 2000; ++i) {
        Record record{std::string(1, static_cast<char>('A' + below(4))),
                      text(3),
                      static_cast<int>(below(3)),
                      {}};
        for (auto n = below(6); n > 0; --n) {
            Property property{"p" + std::to_string(below(8)), text(2), {}};
            if (below(3)) {
                property.value = text(256);
            } else {
                property.value = static_cast<int>(random());
            }
            record.properties.push_back(property);
        }
        for (auto n = 1 + below(3); n > 0; --n) all.push_back(record);
    }
    fill(all);
    EXPECT_EQ(records(), all);
}

TEST_F(StoreTest, CanBeContinued) {
    const Record record{"T", "n", -1, {{"a", "A", "1"}}};
    fill({record});
    {
        Store store(path(), Store::Mode::update);
        EXPECT_EQ(records(store).size(), 1u);
        store.add(record);
        store.add({"U", "n", -1, {{"b", "B", 2}}});
        EXPECT_EQ(records(store).size(), 3u);  // also what is not committed yet
        store.commit();
    }
    EXPECT_EQ(records(), (std::vector<Record>{record, record, {"U", "n", -1, {{"b", "B", 2}}}}));
    EXPECT_EQ(ask("select qv_seq from T"), "1\n2\n");
}

TEST_F(StoreTest, WaitsForWhoeverHasItLocked) {
    Store store(path(), Store::Mode::create);
    store.commit();
    SQLite::Database other(path(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN EXCLUSIVE");
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        other.exec("ROLLBACK");
    });
    EXPECT_NO_THROW(store.set_meta("status", "complete"));
    release.join();
    store.commit();
    EXPECT_EQ(Store(path(), Store::Mode::read).meta("status"), "complete");
}

TEST_F(StoreTest, ReadingWritesNothing) {
    fill({{"T", "n", -1, {{"a", "A", "1"}}}});
    std::filesystem::permissions(path(), std::filesystem::perms::owner_read);
    std::filesystem::permissions(
        dir, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const auto before = test::content(path());
    EXPECT_EQ(records().size(), 1u);
    EXPECT_EQ(test::content(path()), before);
    EXPECT_EQ(files(), std::vector<std::string>{"report.sqlite"});
    Store store(path(), Store::Mode::read);
    EXPECT_THROW(store.add({"T", "n", -1, {}}), std::exception);
}

TEST_F(StoreTest, WhatComputesIsRefused) {
    for (const char* sql :
         {"create view v as with recursive n(i) as (select 1 union all select i+1 from n) "
          "select i from n",
          "create trigger t after insert on T begin delete from T; end",
          "create table big(a, b as (hex(zeroblob(400000000))))",
          "alter table T add column b generated always As/*\n*/\n(hex(zeroblob(400000000)))",
          "create virtual table f using fts5(a)"}) {
        std::filesystem::remove(path());
        fill({{"T", "n", -1, {{"a", "A", "1"}}}});
        SQLite::Database(path(), SQLite::OPEN_READWRITE).exec(sql);
        for (const auto mode : {Store::Mode::read, Store::Mode::update}) {
            std::string told;
            try {
                const Store store(path(), mode);
            } catch (const std::runtime_error& error) {
                told = error.what();
            }
            EXPECT_EQ(told, path() + ": not a store of qvhost: it computes what it holds") << sql;
        }
    }
}

TEST_F(StoreTest, WhatIsNoStoreIsToldByName) {
    const auto told = [&](Store::Mode mode) -> std::string {
        try {
            const Store store(path(), mode);
            store.modules();
            return "opened";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    };
    EXPECT_TRUE(told(Store::Mode::read).starts_with(path())) << told(Store::Mode::read);
    std::ofstream(path()) << "no database at all, but long enough to have a header of its own ....";
    EXPECT_EQ(told(Store::Mode::read), path() + kNoStore);
    EXPECT_EQ(told(Store::Mode::update), path() + kNoStore);
    EXPECT_TRUE(told(Store::Mode::create).starts_with(path()))
        << "an existing file is not replaced";
    std::filesystem::remove(path());
    {
        SQLite::Database other(path(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        other.exec("create table x(y)");
    }
    EXPECT_EQ(told(Store::Mode::read), path() + kNoStore);
}

TEST_F(StoreTest, ATruncatedStoreIsAnError) {
    std::vector<Record> many(3000, {"T", "n", -1, {{"a", "A", std::string(100, 'x')}}});
    fill(many);
    std::filesystem::resize_file(path(), std::filesystem::file_size(path()) / 2);
    try {
        records();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(
            error.what(),
            path() + ": the store is damaged or cut short; copy it again from where it was made");
    }
}

TEST_F(StoreTest, AStoreThatAnotherProgramUsesIsToldSo) {
    fill({{"T", "n", -1, {{"a", "A", "1"}}}});
    SQLite::Database other(path(), SQLite::OPEN_READWRITE);
    other.exec("begin exclusive");
    try {
        const Store store(path(), Store::Mode::update);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(),
                  path() + ": another program is using the store; try again when it has ended");
    }
}

}  // namespace
