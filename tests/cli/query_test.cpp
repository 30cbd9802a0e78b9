// "qvhost query": what it prints, what it refuses, and what it says of bad SQL.
#include <csignal>
#include <nlohmann/json.hpp>

#include "report_under_test.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class Query : public ReportTest {
protected:
    void SetUp() override {
        ReportTest::SetUp();
        store_ = store_with({
            record({{"a", "A", "one"s}, {"b", "B", 1}}),
            record({{"a", "A", " two \n"s}, {"b", "B", -2}}),
        });
    }
    Outcome query(const std::string& sql, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"query", store_, sql};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    }
    std::string result(const std::string& sql, const std::string& format) {
        const auto outcome = query(sql, {"--format", format});
        EXPECT_EQ(outcome.exit, 0);
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
    fs::path store_;
};

TEST_F(Query, ATableIsAsWideAsItsValues) {
    const auto outcome = query("SELECT a, b AS number FROM T");
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "a      number\n"
              "-----  ------\n"
              "one    1\n"
              "two    -2\n");
    EXPECT_EQ(result("SELECT a, b AS number FROM T", "table"), outcome.out);
    EXPECT_EQ(result("SELECT a FROM EMPTY", "table"), "a\n-----\n");
}

TEST_F(Query, ColumnsShareWhatThereIs) {
    const auto outcome = run(Invocation{
        .arguments = {"query", store_, "SELECT 'short' s, 'words that need more than there is' x"},
        .environment = {{"COLUMNS", "24"}}});
    EXPECT_EQ(outcome.out,
              "s      x\n"
              "-----  -----------------\n"
              "short  words that need\n"
              "       more than there\n"
              "       is\n");
}

TEST_F(Query, ColumnsForWhichThereIsNoRoomStandBelowEachOther) {
    const auto outcome =
        run(Invocation{.arguments = {"query", store_, "SELECT 1 one, 2 two, 3 three"},
                       .environment = {{"COLUMNS", "12"}}});
    EXPECT_EQ(outcome.out, "-- 1 -------\none    1\ntwo    2\nthree  3\n");
}

// The text is as SQL has it; in the store texts can hold NULs and bytes that are not UTF-8.
const std::string kAllKinds =
    "SELECT 1 i, -0.5 r, NULL n, '' e, x'00ff' x, "
    "CAST(x'61001b5b33316dff' AS TEXT) t, 'a,\"b\"' q, 'a'||char(10)||'b' l, '-5' f";

TEST_F(Query, TablesShowWhatATerminalMustNotGet) {
    auto invocation = Invocation{.arguments = {"query", store_, kAllKinds}};
    invocation.environment["COLUMNS"] = "100";
    EXPECT_EQ(run(invocation).out,
              "i     r     n     e     x       t                 q     l     f\n"
              "----- ----- ----- ----- ------- ----------------- ----- ----- -----\n"
              "1     -0.5              X'00FF' a\\x00\\x1b[31m\\xff a,\"b\" a     -5\n"
              "                                                        b\n");
}

TEST_F(Query, CsvIsRfc4180AndInert) {
    const std::string head = "i,r,n,e,x,t,q,l,f\r\n";
    const std::string begin = "1,-0.5,,\"\",X'00FF',\"a\0\x1b[31m\xff\",\"a,\"\"b\"\"\",\"a\nb\","s;
    EXPECT_EQ(result(kAllKinds, "csv"), head + begin + "'-5\r\n");
    EXPECT_EQ(query(kAllKinds, {"--format", "csv", "--raw"}).out, head + begin + "-5\r\n");
    EXPECT_EQ(result("SELECT NULL n UNION ALL SELECT ''", "csv"), "n\r\n\"\"\r\n\"\"\r\n");
    EXPECT_EQ(result("SELECT a AS \"=1+1\" FROM EMPTY", "csv"), "'=1+1\r\n");
}

TEST_F(Query, JsonIsAnArrayOfObjects) {
    EXPECT_EQ(result(kAllKinds, "json"),
              R"([
{"i":1,"r":-0.5,"n":null,"e":"","x":"X'00FF'","t":"a\u0000\u001b[31m�","q":"a,\"b\"","l":"a\nb","f":"-5"}
]
)");
    EXPECT_EQ(result("SELECT a, a, b AS a FROM T", "json"),
              "[\n{\"a\":\"one\",\"a:2\":\"one\",\"a:3\":1},\n"
              "{\"a\":\" two \\n\",\"a:2\":\" two \\n\",\"a:3\":-2}\n]\n");
    EXPECT_EQ(result("SELECT a FROM EMPTY", "json"), "[\n]\n");
    EXPECT_EQ(result("SELECT 9223372036854775807 i, 9e999 r", "json"),
              "[\n{\"i\":9223372036854775807,\"r\":null}\n]\n");
}

struct Refused {
    const char* sql;
    const char* what;
};

TEST_F(Query, WhatWouldChangeAnythingIsRefused) {
    const Refused statements[] = {
        {"ATTACH 'other.sqlite' AS other", "ATTACH"},
        {"DETACH main", "DETACH"},
        {"INSERT INTO T(a) VALUES('x')", "INSERT"},
        {"REPLACE INTO T(a) VALUES('x')", "REPLACE"},
        {"UPDATE T SET a='x'", "UPDATE"},
        {"DELETE FROM T", "DELETE"},
        {"delete from T", "DELETE"},
        {"EXPLAIN DELETE FROM T", "EXPLAIN"},
        {"CREATE TABLE t2(a)", "CREATE"},
        {"CREATE TEMP TABLE t2(a)", "CREATE"},
        {"CREATE VIEW v AS SELECT 1", "CREATE"},
        {"CREATE VIRTUAL TABLE f USING fts5(a)", "CREATE"},
        {"DROP TABLE T", "DROP"},
        {"ALTER TABLE T ADD COLUMN z", "ALTER"},
        {"VACUUM", "VACUUM"},
        {"VACUUM INTO 'other.sqlite'", "VACUUM"},
        {"BEGIN IMMEDIATE", "BEGIN"},
        {"SAVEPOINT s", "SAVEPOINT"},
        {"ANALYZE", "ANALYZE"},
        {"REINDEX", "REINDEX"},
        {"PRAGMA journal_mode=WAL", "PRAGMA journal_mode"},
        {"PRAGMA user_version=7", "PRAGMA user_version"},
        {"PRAGMA query_only=OFF", "PRAGMA query_only"},
        {"PRAGMA writable_schema=1", "PRAGMA writable_schema"},
        {"PRAGMA temp_store_directory='x'", "PRAGMA temp_store_directory"},
        {"SELECT load_extension('other.so')", "load_extension()"},
        {"SELECT fts3_tokenizer('simple')", "fts3_tokenizer()"},
    };
    const auto before = read_file(store_);
    const auto place = dir() / "place";
    fs::create_directory(place);
    for (const auto& [sql, what] : statements) {
        SCOPED_TRACE(sql);
        const auto outcome =
            run(Invocation{.arguments = {"query", store_, sql}, .directory = place});
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "qvhost: a report is only read: "s + what + " is refused\n");
    }
    EXPECT_EQ(read_file(store_), before);
    EXPECT_TRUE(fs::is_empty(place));
}

TEST_F(Query, BadSqlIsNamed) {
    const Refused statements[] = {
        {"", "the statement is empty"},
        {"  ; -- nothing\n", "the statement is empty"},
        {"SELECT 1; SELECT 2", "more than one statement; one at a time, please"},
        {"SELECT 1; DROP TABLE T", "more than one statement; one at a time, please"},
        {"SELECT 1; nonsense", "more than one statement; one at a time, please"},
        {"SELEC 1", "not understood from here on: SELEC 1"},
        {"SELECT 'x", "not understood from here on: 'x"},
        {"SELECT 1 FROM T WHERE", "the statement ends too early"},
        {"SELECT nope(1)", "there is no function nope"},
        {"SELECT abs(1, 2)", "wrong number of arguments to function abs(), at: abs(1, 2)"},
        {"SELECT 1 FROM main.emptyy", "there is no table main.emptyy; did you mean EMPTY?"},
        {"SELECT qv_sqe FROM t", "there is no column qv_sqe; did you mean qv_seq?"},
        {"SELECT x.QVSEQ FROM T x", "there is no column x.QVSEQ; did you mean qv_seq?"},
        {"SELECT t.b FROM T AS x", "there is no column t.b; is t a table of the statement?"},
        {"SELECT nope", "there is no column nope"},
        {"SELECT b, nope FROM T", "there is no column nope; T has qv_seq, a, b"},
        {"SELECT \"nope\" FROM T", "there is no column nope; T has qv_seq, a, b"},
        {"SELECT abs(-9223372036854775807 - 1)", "integer overflow"},
        {"UPDATE sqlite_master SET name='x'", "table sqlite_master may not be modified"},
    };
    for (const auto& [sql, what] : statements) {
        SCOPED_TRACE(sql);
        const auto outcome = query(sql);
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "qvhost: SQL: "s + what + "\n");
    }
    const auto others = query("SELECT 1 FROM zzzzzzzzzzzz").err;
    EXPECT_TRUE(
        others.starts_with("qvhost: SQL: there is no table zzzzzzzzzzzz; there are EMPTY, T"))
        << others;
    EXPECT_EQ(others.find("qv_"), std::string::npos) << others;
    EXPECT_EQ(query("SELECT \033[31m").err,
              "qvhost: SQL: not understood from here on: \\x1b[31m\n");
}

TEST_F(Query, OneStatementMayHaveAnEndAndComments) {
    EXPECT_EQ(result(";; SELECT 1 one; -- done\n /* really */ ;", "csv"), "one\r\n1\r\n");
}

TEST_F(Query, WhatOnlyTellsIsAllowed) {
    EXPECT_EQ(result("PRAGMA integrity_check", "csv"), "integrity_check\r\nok\r\n");
    EXPECT_EQ(result("PRAGMA encoding", "csv"), "encoding\r\nUTF-8\r\n");
    const std::string columns = "name\r\nqv_seq\r\na\r\nb\r\n";
    EXPECT_EQ(result("SELECT name FROM pragma_table_info('T')", "csv"), columns);
    EXPECT_EQ(result("SELECT value FROM json_each('[1,2]')", "csv"), "value\r\n1\r\n2\r\n");
    EXPECT_EQ(result("WITH t(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM t LIMIT 2) "
                     "SELECT i FROM t",
                     "csv"),
              "i\r\n1\r\n2\r\n");
    EXPECT_NE(result("EXPLAIN QUERY PLAN SELECT * FROM T", "csv").find("SCAN T"),
              std::string::npos);
}

TEST_F(Query, WhatIsNoReportIsNamed) {
    write_file(dir() / "text", "no store");
    for (const auto& report : {dir() / "text", dir() / "nowhere", fs::path("file:x?mode=rwc")}) {
        const auto outcome =
            run(Invocation{.arguments = {"query", report, "SELECT 1"}, .directory = dir()});
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.starts_with("qvhost: " + report.string() + ": ")) << outcome.err;
    }
}

const std::string kEndless =
    "WITH RECURSIVE t(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM t) SELECT ";

// Rows arrive while the statement runs, in little memory, and Ctrl-C ends it.
TEST_F(Query, RowsAreStreamed) {
    for (const char* format : {"table", "csv", "json"}) {
        SCOPED_TRACE(format);
        const auto out = dir() / (format + "-rows"s);
        const pid_t pid = start(
            Invocation{.arguments = {"query", store_, kEndless + "i FROM t", "--format", format},
                       .out_file = out});
        wait_until("a megabyte has arrived", [&] {
            std::error_code error;
            return fs::file_size(out, error) > 1'000'000 && !error;
        });
        EXPECT_EQ(::kill(pid, SIGINT), 0);
        EXPECT_EQ(finish(pid).signal, SIGINT);
    }
}

TEST_F(Query, CtrlCEndsAStatementThatGivesNothing) {
    const pid_t pid = start(Invocation{.arguments = {"query", store_, kEndless + "max(i) FROM t"}});
    wait_until("it has opened the store", [&] {
        for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
            std::error_code error;
            if (fs::read_symlink(entry.path(), error) == store_) return true;
        }
        return false;
    });
    EXPECT_EQ(::kill(pid, SIGINT), 0);
    EXPECT_EQ(finish(pid).signal, SIGINT);
}

TEST_F(Query, OutputThatCannotBeWrittenEndsIt) {
    const auto outcome = run(
        Invocation{.arguments = {"query", store_, kEndless + "i FROM t"}, .out_file = "/dev/full"});
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_EQ(outcome.err, "qvhost: cannot write to standard output\n");
}

TEST_F(Query, ARecordedServerAnswers) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto outcome = run({"query", log, "SELECT item1, item2, item4 FROM SENSORINFO LIMIT 3"});
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "item1      item2   item4\n"
              "---------  ------  -----\n"
              "CPU1 Temp  48.000  ok\n"
              "CPU2 Temp  92.000  nc\n"
              "PCH Temp   44.000  ok\n");
}

// Each table's rows are those of report.json, in their order.
TEST_F(Query, JsonHasTheValuesOfTheReport) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto report = nlohmann::json::parse(read_file(log / "report" / "report.json"));
    const auto rows = nlohmann::json::parse(
        run({"query", log, "SELECT * FROM SENSORINFO ORDER BY qv_seq", "--format", "json"}).out);
    nlohmann::json expected = nlohmann::json::array();
    std::int64_t seq = 0;
    for (const auto& one : report["records"]) {
        ++seq;
        if (one["table"] != "SENSORINFO") continue;
        nlohmann::json row{{"qv_seq", seq}};
        for (const auto& property : one["properties"])
            row[property["id"].get<std::string>()] = property["value"];
        expected.push_back(row);
    }
    EXPECT_EQ(rows.size(), 63u);
    EXPECT_EQ(rows, expected);
}

}  // namespace

}  // namespace test
