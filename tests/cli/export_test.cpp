// "qvhost export": the formats, and where they go.
#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "csv.h"
#include "report_under_test.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

using Export = ReportTest;
using Rows = std::vector<std::vector<std::string>>;

mode_t mode_of(const fs::path& file) {
    struct stat status = {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
    return status.st_mode & 07777;
}

std::set<std::string> names_in(const fs::path& directory) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        names.insert(entry.path().filename());
    return names;
}

TEST_F(Export, JsonIsTheReport) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto report = read_file(log / "report" / "report.json");
    const auto outcome = run({"export", log, "--format", "json"});
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(outcome.out == report);

    const auto file = dir() / "copy.json";
    const std::vector<std::string> into_file{"export", log, "--format", "json", "--output", file};
    EXPECT_EQ(run(into_file).exit, 0);
    EXPECT_TRUE(read_file(file) == report);
    EXPECT_EQ(mode_of(file), 0600u);

    write_file(file, "mine");
    const auto refused = run(into_file);
    EXPECT_EQ(refused.exit, 1);
    EXPECT_EQ(refused.err, "qvhost: " + file.string() + ": exists already; it is not replaced\n");
    EXPECT_EQ(read_file(file), "mine");
}

TEST_F(Export, CsvMakesFormulasInert) {
    std::vector<qvhost::Record> records;
    std::string inert = "a,b\r\n";
    std::string raw = inert;
    const struct {
        std::string value, inert, raw;
    } values[] = {
        {"=1+1", "'=1+1", "=1+1"},
        {"+1", "'+1", "+1"},
        {"-1", "'-1", "-1"},
        {"@SUM(1)", "'@SUM(1)", "@SUM(1)"},
        {"\t=1", "\"'\t'=1\"", "\"\t=1\""},
        {"\r=1", "\"'\r'=1\"", "\"\r=1\""},
        {"\0=1"s, "\"'\0=1\""s, "\"\0=1\""s},
        {"=\"a\",b", "\"'=\"\"a\"\",b\"", "\"=\"\"a\"\",b\""},
        {" =1", "' =1", "\" =1\""},
        {"\xef\xbc\x9d"
         "1",
         "'\xef\xbc\x9d"
         "1",
         "\xef\xbc\x9d"
         "1"},
        {"\xef\xbc\x8b"
         "1",
         "'\xef\xbc\x8b"
         "1",
         "\xef\xbc\x8b"
         "1"},
        {"\xef\xbc\x8d"
         "1",
         "'\xef\xbc\x8d"
         "1",
         "\xef\xbc\x8d"
         "1"},
        {"\xef\xbc\xa0"
         "1",
         "'\xef\xbc\xa0"
         "1",
         "\xef\xbc\xa0"
         "1"},
        {"\xc2\xa0\xe3\x80\x80=1", "'\xc2\xa0\xe3\x80\x80=1", "\xc2\xa0\xe3\x80\x80=1"},
        {",=1", "\"',=1\"", "\",=1\""},
        {";=1", "\"';'=1\"", "\";=1\""},
        {"x; =1", "\"x; '=1\"", "\"x; =1\""},
        {"x|\"@1", "\"x|\"\"'@1\"", "\"x|\"\"@1\""},
        {"x\n\xef\xbc\x9d"
         "1",
         "\"x\n'\xef\xbc\x9d"
         "1\"",
         "\"x\n\xef\xbc\x9d"
         "1\""},
        {"10, -5", "\"10, -5\"", "\"10, -5\""},
        {"a;b", "\"a;b\"", "\"a;b\""},
        {"1=1", "1=1", "1=1"},
        {"", "\"\"", "\"\""},
        {"a\0\xff\x1b"s, "\"a\0\xff\x1b\""s, "\"a\0\xff\x1b\""s},
        {"two\nlines", "\"two\nlines\"", "\"two\nlines\""},
        {"'", "'", "'"},
    };
    for (const auto& value : values) {
        records.push_back(record({{"a", "A", value.value}, {"b", "B", -7}}));
        inert += value.inert + ",-7\r\n";
        raw += value.raw + ",-7\r\n";
    }
    records.push_back(record({{"b", "B", "alone"s}}));
    inert += ",alone\r\n";
    raw += ",alone\r\n";
    const auto store = store_with(records);
    EXPECT_EQ(run({"export", store, "--format", "csv", "--table", "T"}).out, inert);
    EXPECT_EQ(run({"export", store, "--format", "csv", "--table", "T", "--raw"}).out, raw);
    EXPECT_EQ(run({"export", store, "--format", "csv", "--table", "EMPTY"}).out, "a,b\r\n");
}

// Escapes that set a window's title, 8-bit escapes, overrides, what is not seen.
const std::string kHidden =
    "a\x1b]0;title\x07\xc2\x9b"
    "31m\xe2\x80\xae\xe2\x80\x8b\xef\xbb\xbf\x7fz";

TEST_F(Export, ATerminalGetsNoEscapes) {
    const auto store = store_with({record({{"a", "A", kHidden}, {kHidden, kHidden, "x"s}})});
    for (const std::string& command : std::vector<std::string>{
             "export " + store.string() + " --format json",
             "export " + store.string() + " --format csv --table T",
             "export " + store.string() + " --format csv --table T --raw",
             "query " + store.string() + " 'SELECT * FROM T' --format json",
             "query " + store.string() + " 'SELECT * FROM T' --format csv",
             "query " + store.string() + " 'SELECT * FROM T'", "show " + store.string() + " T",
             "show " + store.string() + " --all", "show " + store.string() + " T --format jsonl"}) {
        const auto on_terminal =
            run(Invocation{.arguments = {"-qec", "'" QV_PROGRAM "' " + command, "/dev/null"},
                           .environment = {{"TERM", "dumb"}, {"PAGER", "cat"}},
                           .program = {"script"}});
        EXPECT_EQ(on_terminal.exit, 0) << on_terminal.out;
        EXPECT_NE(on_terminal.out.find("title"), std::string::npos) << command << on_terminal.out;
        for (const char* hidden :
             {"\x1b", "\x07", "\xc2\x9b", "\xe2\x80\xae", "\xe2\x80\x8b", "\xef\xbb\xbf", "\x7f"})
            EXPECT_EQ(on_terminal.out.find(hidden), std::string::npos)
                << command << on_terminal.out;
    }
}

// JSON loses nothing by its escapes; CSV in a file or a pipe has the bytes themselves.
TEST_F(Export, NothingIsLostByEscapes) {
    const auto text = kHidden + "\xf3\xa0\x80\xa0\xf0\x9f\x98\x80\xc3\xa4";
    const auto store = store_with({record({{"a", "A", text}})});
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"export", store, "--format", "json"},
          {"query", store, "SELECT a FROM T", "--format", "json"}}) {
        const auto printed = run(arguments).out;
        for (const char* escape : {"\\u001b", "\\u009b", "\\u202e", "\\u200b", "\\ufeff", "\\u007f",
                                   "\\udb40\\udc20", "\xf0\x9f\x98\x80\xc3\xa4"})
            EXPECT_NE(printed.find(escape), std::string::npos) << escape << printed;
        const auto read = nlohmann::json::parse(printed);
        EXPECT_EQ(
            arguments[0] == "query" ? read[0]["a"] : read["records"][0]["properties"][0]["value"],
            text);
    }
    EXPECT_EQ(run({"query", store, "SELECT a FROM T", "--format", "csv"}).out,
              "a\r\n\"" + text + "\"\r\n");
}

TEST_F(Export, CsvIsAPrivateFileATable) {
    const auto store = store_with({record({{"a", "A", "=x"s}})});
    const auto out = dir() / "out";
    const std::vector<std::string> arguments{"export", store, "--format", "csv", "--output", out};
    const auto outcome = run(arguments);
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(names_in(out), (std::set<std::string>{"EMPTY.csv", "T.csv"}));
    EXPECT_EQ(mode_of(out), 0700u);
    EXPECT_EQ(mode_of(out / "T.csv"), 0600u);
    EXPECT_EQ(read_file(out / "T.csv"), "a,b\r\n'=x,\r\n");
    EXPECT_EQ(read_file(out / "EMPTY.csv"), "a,b\r\n");

    const auto again = run(arguments);
    EXPECT_EQ(again.exit, 1);
    EXPECT_EQ(again.err, "qvhost: " + out.string() +
                             ": the directory is not empty; nothing is written into it\n");

    fs::create_directory(dir() / "void");
    EXPECT_EQ(run({"export", store, "--format", "csv", "--output", dir() / "void", "--raw"}).exit,
              0);
    EXPECT_EQ(read_file(dir() / "void" / "T.csv"), "a,b\r\n=x,\r\n");

    write_file(dir() / "file", "");
    EXPECT_EQ(run({"export", store, "--format", "csv", "--output", dir() / "file"}).err,
              "qvhost: " + (dir() / "file").string() + ": not a directory\n");
}

TEST_F(Export, HtmlIsThePage) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const auto out = dir() / "out";
    const std::vector<std::string> arguments{"export", log, "--format", "html", "--output", out};
    const auto outcome = run(arguments);
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(names_in(out), (std::set<std::string>{"assets", "data", "index.html"}));
    EXPECT_EQ(mode_of(out), 0700u);
    EXPECT_EQ(mode_of(out / "index.html"), 0600u);
    // The rows are those of the collection's own page.
    const auto page = log / "report";
    const auto data = names_in(out / "data");
    std::set<std::string> filled;
    const auto report = nlohmann::json::parse(read_file(page / "report.json"));
    for (const auto& one : report["records"]) filled.insert(one["table"]);
    EXPECT_EQ(data.size(), filled.size() + 2)
        << "a file a table with records, one of events, and the overview";
    for (const auto& name : data) {
        if (name != "overview.js") {
            EXPECT_EQ(read_file(out / "data" / name), read_file(page / "data" / name)) << name;
        }
    }
    EXPECT_EQ(run(arguments).exit, 1) << "it is not replaced";
}

// Ids are a plug-in's, and could be anything.
TEST_F(Export, AnyTableIdMakesAFileOfTheDirectory) {
    std::vector<qvhost::Record> records;
    for (const std::string& id :
         {"../up"s, ""s, "."s, "a/b"s, "A/B"s, "x\0y"s, std::string(300, 'l')})
        records.push_back({id, "", -1, {{"v", "", id}}});
    const auto store = store_with(records);
    const auto out = dir() / "out";
    EXPECT_EQ(run({"export", store, "--format", "csv", "--output", out, "--raw"}).exit, 0);
    std::set<std::string> values;
    for (const auto& name : names_in(out)) {
        const auto rows = read_csv(read_file(out / name));
        if (rows.size() > 1) values.insert(rows.at(1).at(0));
    }
    std::set<std::string> expected;
    for (const auto& one : records) expected.insert(one.table);
    EXPECT_EQ(values, expected);
    EXPECT_FALSE(fs::exists(dir() / "up.csv"));
}

TEST_F(Export, WhatDoesNotGoTogetherIsToldFirst) {
    const auto store = store_with({});
    const std::vector<std::vector<std::string>> misuses = {
        {},
        {"--format", "yaml"},
        {"--format", "csv"},
        {"--format", "csv", "--table", "T", "--output", dir() / "out"},
        {"--format", "csv", "--output", ""},
        {"--format", "csv", "--table", "T", "--table", "EMPTY"},
        {"--format", "jsonl", "--raw"},
        {"--format", "json", "--raw"},
        {"--format", "html"},
        {"--format", "html", "--output", dir() / "out", "--raw"},
    };
    for (auto arguments : misuses) {
        arguments.insert(arguments.begin(), {"export", store});
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(fs::exists(dir() / "out"));
    const auto unknown = run({"export", store, "--format", "csv", "--table", "NONE"});
    EXPECT_EQ(unknown.exit, 1);
    EXPECT_EQ(unknown.err, "qvhost: " + store.string() +
                               ": there is no table NONE; \"qvhost show REPORT\" lists them\n");
}

TEST_F(Export, AFullDiskIsTold) {
    const auto store = store_with({record({{"a", "A", "x"s}})});
    for (const std::vector<std::string>& format :
         {std::vector<std::string>{"json"}, {"csv", "--table", "T"}}) {
        std::vector<std::string> arguments{"export", store, "--format"};
        arguments.insert(arguments.end(), format.begin(), format.end());
        const auto outcome = run(Invocation{.arguments = arguments, .out_file = "/dev/full"});
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_EQ(outcome.err, "qvhost: cannot write to standard output\n");
    }
}

std::string text_of(const nlohmann::json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

class ExportOfRecorded : public ReportTest, public testing::WithParamInterface<std::string> {};

// The text as JSON can have it: what is not UTF-8 is U+FFFD.
std::string as_json_has_it(const std::string& text) {
    const auto dumped =
        nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return nlohmann::json::parse(dumped).get<std::string>();
}

// Every value of the report is in the file of its table, in its row, in the column of its id.
TEST_P(ExportOfRecorded, CsvHasTheValuesOfTheReport) {
    const auto log = replayed(GetParam());
    const auto out = dir() / "out";
    ASSERT_EQ(run({"export", log, "--format", "csv", "--output", out, "--raw"}).exit, 0);
    const auto report = nlohmann::json::parse(read_file(log / "report" / "report.json"));

    std::set<std::string> tables;
    for (const auto& module : report["modules"]) {
        for (const auto& table : module["tables"])
            tables.insert(table["id"].get<std::string>() + ".csv");
    }
    EXPECT_EQ(names_in(out), tables);

    std::map<std::string, Rows> expected;
    std::map<std::string, Rows> actual;
    for (const auto& name : tables) {
        actual[name] = read_csv(read_file(out / name));
        for (auto& row : actual[name])
            std::transform(row.begin(), row.end(), row.begin(), as_json_has_it);
        expected[name] = {actual[name].at(0)};
    }
    for (const auto& one : report["records"]) {
        auto& rows = expected.at(one["table"].get<std::string>() + ".csv");
        std::map<std::string, std::string> values;
        for (const auto& property : one["properties"])
            values[property["id"].get<std::string>()] = text_of(property["value"]);
        std::vector<std::string> row;
        for (const auto& id : rows[0]) {
            row.push_back(values[id]);
            values.erase(id);
        }
        for (const auto& [id, value] : values) ADD_FAILURE() << "no column for " << id;
        rows.push_back(row);
    }
    EXPECT_TRUE(actual == expected);
}

std::string test_name(const testing::TestParamInfo<std::string>& info) {
    auto name = info.param;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Recorded, ExportOfRecorded, testing::ValuesIn(some_of(recorded_servers())),
                         test_name);

}  // namespace

}  // namespace test
