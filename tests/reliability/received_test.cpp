// Reports that somebody else made: whatever lies in their directory, looking at them writes nothing
// outside of it, and nothing of it becomes a path.
#include <sqlite3.h>
#include <sys/stat.h>

#include <functional>
#include <map>

#include "hot_journal.h"
#include "program.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;

// Everything below a directory, by name, with the time of its last change and what tells its contents.
std::map<std::string, std::string> everything_in(const fs::path& directory) {
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        struct stat info {};
        ::lstat(entry.path().c_str(), &info);
        found[entry.path().string()] =
            std::to_string(info.st_ctim.tv_sec) + "." + std::to_string(info.st_ctim.tv_nsec) + " " +
            std::to_string(S_ISREG(info.st_mode) ? std::hash<std::string>()(read_file(entry.path()))
                                                 : 0);
    }
    return found;
}

class Received : public ProductTest {
protected:
    void SetUp() override {
        ProductTest::SetUp();
        ASSERT_EQ(run(collect("calm", {"--quiet"})).exit, 0);
        write_file(victim(), "kept");
    }

    // Every command that reads a report.
    std::vector<std::vector<std::string>> readers() const {
        return {
            {"show", log_dir(), "--all"},
            {"show", log_dir(), "ANOTHER", "--format", "jsonl"},
            {"export", log_dir(), "--format", "jsonl"},
            {"query", log_dir(), "SELECT * FROM ANOTHER"},
            {"query", log_dir(), "SELECT * FROM qv_meta"},
            {"check", log_dir()},
            {"export", log_dir(), "--format", "json"},
            {"export", log_dir(), "--format", "prometheus"},
            {"export", log_dir(), "--format", "csv", "--table", "ANOTHER"},
            {"export", log_dir(), "--format", "html", "--output", dir() / "page"},
        };
    }

    fs::path victim() const { return dir() / "victim"; }
    fs::path report() const { return log_dir() / "report"; }
};

TEST_F(Received, AJournalBesideTheStoreIsNotRolledBack) {
    write_file(report() / "report.sqlite-journal",
               hot_journal(read_file(store_in(log_dir())), victim()));
    const auto before = everything_in(log_dir());
    for (const auto& arguments : readers()) {
        const auto outcome = run(arguments);
        EXPECT_NE(outcome.exit, 0) << arguments[0];
        EXPECT_NE(outcome.out.find("report.sqlite-journal") != std::string::npos ||
                      outcome.err.find("report.sqlite-journal") != std::string::npos,
                  false)
            << arguments[0] << outcome.err;
        EXPECT_EQ(read_file(victim()), "kept") << arguments[0];
        EXPECT_EQ(everything_in(log_dir()), before) << arguments[0];
        fs::remove_all(dir() / "page");
    }
}

// The journal of a collection that seems to be broken off lets the report be completed.
TEST_F(Received, CompletingAReportRollsNothingBack) {
    const auto journal = hot_journal(read_file(store_in(log_dir())), victim());
    for (const char* name : {"report.sqlite-journal", "report.sqlite.new-journal",
                             "unfinished/report.sqlite-journal"}) {
        for (const auto& arguments : readers()) {
            SCOPED_TRACE(name + (" " + arguments[0]));
            write_file(report() / name, journal);
            write_file(report() / "collection.journal", {8, 0, 0, 0, 0, 0, 0, 0});
            run(arguments);
            EXPECT_EQ(read_file(victim()), "kept");
            for (const auto& [entry, content] : everything_in(report()))
                EXPECT_FALSE(entry.ends_with("sqlite-journal")) << entry << " stays beside it";
            fs::remove_all(dir() / "page");
        }
    }
    EXPECT_EQ(run(collect("calm")).exit, 0);
    EXPECT_EQ(read_file(victim()), "kept");
}

// A terabyte of holes, where the logs of the collection should be.
TEST_F(Received, CompletingAReportReadsABoundedPartOfItsLogs) {
    for (const fs::path& log :
         {report() / "commands.log", report() / "commands-2.log", report() / "qvhost-2.log",
          report() / "console-2.txt", log_dir() / "qvhost.log"}) {
        write_file(report() / "collection.journal", {8, 0, 0, 0, 0, 0, 0, 0});
        write_file(log, "a line\n");
        fs::resize_file(log, std::uintmax_t{1} << 40);
    }
    EXPECT_EQ(run({"show", log_dir()}).exit, 0);
    EXPECT_LT(fs::file_size(log_dir() / "console.txt"), std::uintmax_t{1} << 20);
    EXPECT_EQ(fs::file_size(log_dir() / "qvhost.log"), std::uintmax_t{1} << 40);
    EXPECT_FALSE(fs::exists(report() / "collection.journal"));
}

// A copy of the directory that is made of hard links stays as it is.
TEST_F(Received, CompletingAReportLeavesACopyAsItIs) {
    const auto before = read_file(log_dir() / "qvhost.log");
    fs::create_hard_link(log_dir() / "qvhost.log", dir() / "copy");
    write_file(report() / "collection.journal", {8, 0, 0, 0, 0, 0, 0, 0});
    write_file(report() / "qvhost-2.log", "what another lane did\n");
    EXPECT_EQ(run({"show", log_dir()}).exit, 0);
    EXPECT_EQ(read_file(dir() / "copy"), before);
    EXPECT_EQ(read_file(report() / "qvhost-2.log"), "what another lane did\n");
}

TEST_F(Received, ANewCollectionRollsNothingBack) {
    write_file(report() / "report.sqlite-journal",
               hot_journal(read_file(store_in(log_dir())), victim()));
    EXPECT_EQ(run(collect("calm")).exit, 0);
    EXPECT_EQ(read_file(victim()), "kept");
}

// A store as a reader of another program's may leave it: part of it in its log.
TEST_F(Received, AWriteAheadLogIsReadFromACopy) {
    const auto copy = dir() / "copy.sqlite";
    fs::copy_file(store_in(log_dir()), copy);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(copy.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;"
                           "UPDATE qv_meta SET value='logged' WHERE key='qvhost'",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    for (const char* part : {"", "-wal", "-shm"})
        fs::copy_file(copy.string() + part, store_in(log_dir()).string() + part,
                      fs::copy_options::overwrite_existing);
    sqlite3_close(db);

    const auto before = everything_in(log_dir());
    const auto asked = run(
        {"query", log_dir(), "SELECT value FROM qv_meta WHERE key='qvhost'", "--format", "csv"});
    EXPECT_EQ(asked.out, "value\r\nlogged\r\n") << asked.err;
    for (const auto& arguments : readers()) {
        run(arguments);
        EXPECT_EQ(everything_in(log_dir()), before) << arguments[0];
        fs::remove_all(dir() / "page");
    }
}

// Reading a store writes nothing, whatever mode it was left in.
TEST_F(Received, ReadingWritesNothing) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(store_in(log_dir()).c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    const auto before = everything_in(log_dir());
    for (const auto& arguments : readers()) {
        run(arguments);
        EXPECT_EQ(everything_in(log_dir()), before) << arguments[0];
        fs::remove_all(dir() / "page");
    }
}

TEST_F(Received, APipeIsNotWaitedFor) {
    fs::remove(store_in(log_dir()));
    ASSERT_EQ(::mkfifo(store_in(log_dir()).c_str(), 0600), 0);
    for (const auto& arguments : readers()) {
        const auto outcome = run(arguments);
        EXPECT_NE(outcome.exit, 0);
        EXPECT_NE((outcome.out + outcome.err).find("it is no file"), std::string::npos)
            << arguments[0] << outcome.err;
        fs::remove_all(dir() / "page");
    }
}

// A store may tell what it holds, not a multiple of it.
class Swollen : public Received {
protected:
    void change_store(const std::string& sql) {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(store_in(log_dir()).c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db);
        sqlite3_close(db);
    }
    void expect_refused(const std::string& why) {
        const auto store = dir() / "store.sqlite";
        fs::copy_file(store_in(log_dir()), store);  // no journal of a collection is found beside it
        for (auto arguments : readers()) {
            if (arguments[0] == "query" || arguments[0] == "check") continue;
            if (arguments.size() > 3 && arguments[3] == "prometheus") continue;
            arguments[1] = store;
            auto invocation = Invocation{.arguments = arguments};
            invocation.out_file = dir() / "out";
            const auto outcome = run(invocation);
            EXPECT_EQ(outcome.exit, 1) << arguments[0];
            EXPECT_NE(outcome.err.find(why), std::string::npos) << outcome.err;
            EXPECT_LT(fs::file_size(dir() / "out"), std::uintmax_t{500} << 20);
            fs::remove_all(dir() / "page");
        }
        EXPECT_EQ(run({"check", store}).exit, 3);
    }
};

TEST_F(Swollen, RecordsThatOverlap) {
    change_store(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<100000) "
        "INSERT INTO qv_run SELECT -i, 1000000, tab, name, record_index, shape FROM qv_run, n "
        "WHERE first_seq=(SELECT max(first_seq) FROM qv_run)");
    expect_refused("its records overlap");
}

TEST_F(Swollen, TablesOfTheSameRows) {
    change_store("UPDATE qv_table SET sql_name='another' WHERE id='VALUES'");
    expect_refused("its records overlap");
}

// One label of a megabyte for each of many records.
TEST_F(Swollen, LabelsThatManyRecordsShare) {
    change_store(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<100000) "
        "INSERT INTO ANOTHER SELECT 1000+i, 'x' FROM n;"
        "INSERT INTO qv_shape VALUES(77, 0, 'value', hex(zeroblob(500000)));"
        "INSERT INTO qv_run SELECT 1001, 100999, tab, 'n', -1, 77 FROM qv_table WHERE id='ANOTHER'");
    expect_refused("far more than it holds");
}

// One large value for many properties.
TEST_F(Swollen, PropertiesOfTheSameValue) {
    change_store(
        "INSERT INTO ANOTHER VALUES(1000, zeroblob(300000));"
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<1500) "
        "INSERT INTO qv_column SELECT tab, 'p' || i, 'value' FROM n, qv_table WHERE id='ANOTHER';"
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<1500) "
        "INSERT INTO qv_shape SELECT 77, i, 'p' || i, 'P' FROM n;"
        "INSERT INTO qv_run SELECT 1000, 1000, tab, 'n', -1, 77 FROM qv_table WHERE id='ANOTHER'");
    expect_refused("far more than it holds");
}

// The page that came with a report is its sender's program.
TEST_F(Received, ThePageIsMadeAnew) {
    const std::string evil = "<script>alert(1)</script>";
    for (const char* name : {"index.html", "data/overview.js", "assets/page.js"})
        write_file(report() / name, evil);
    write_file(log_dir() / "capture.txt", "what a tool said");
    const auto before = everything_in(log_dir());

    const auto opened =
        run(Invocation{.arguments = {"open", log_dir()},
                       .environment = {{"TMPDIR", dir()}, {"BROWSER", "echo shown:"}}});
    EXPECT_EQ(opened.exit, 0) << opened.err;
    const auto told = lines_of(opened.out);
    ASSERT_EQ(told.size(), 2u) << opened.out;
    EXPECT_EQ(told[1], "shown: " + told[0]);
    const fs::path page = fs::path(told[0]).parent_path();
    EXPECT_EQ(page.parent_path(), dir());
    EXPECT_EQ(fs::status(page).permissions(), fs::perms::owner_all);
    std::string text;
    for (const auto& entry : fs::recursive_directory_iterator(page)) {
        if (entry.is_regular_file()) text += read_file(entry.path());
    }
    EXPECT_EQ(text.find(evil), std::string::npos);
    EXPECT_NE(text.find("what a tool said"), std::string::npos) << "captures are part of it";
    EXPECT_EQ(everything_in(log_dir()), before);

    EXPECT_EQ(run({"open", store_in(log_dir()), "--output", dir() / "chosen"}).exit, 0);
    EXPECT_TRUE(fs::exists(dir() / "chosen" / "index.html"));
    const auto again = run({"open", store_in(log_dir()), "--output", dir() / "chosen"});
    EXPECT_EQ(again.exit, 1) << "nothing is replaced";
}

// A file with holes costs its sender nothing. 64 MiB of JSON, the backslashes in it doubled.
TEST_F(Received, ThePageHoldsABoundedPartOfTheCaptures) {
    for (int i = 0; i < 24; ++i) {
        const auto file = log_dir() / ("sparse" + std::to_string(i) + ".txt");
        write_file(file, std::string(4096, 'x'));
        fs::resize_file(file, std::uintmax_t{1} << 40);
    }
    const auto page = dir() / "page";
    EXPECT_EQ(run({"open", log_dir(), "--output", page}).exit, 0);
    std::uintmax_t bytes = 0;
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(page / "data")) {
        if (!entry.path().filename().string().starts_with("capture-")) continue;
        bytes += entry.file_size();
        ++files;
    }
    EXPECT_LT(bytes, std::uintmax_t{128} << 20);
    EXPECT_GT(files, 8u);
}

// A number in a report never becomes a part of a path.
TEST_F(Received, TheTimeInAStoreIsNoPath) {
    fs::create_directory(dir() / "target");
    qvhost::Store(store_in(log_dir()), qvhost::Store::Mode::update)
        .set_meta("started", "/../../target/x");
    EXPECT_EQ(run(collect("calm")).exit, 0);
    EXPECT_TRUE(fs::is_empty(dir() / "target"));
}

}  // namespace

}  // namespace test
