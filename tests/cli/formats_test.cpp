// Reports of earlier programs, one of each format in formats/: NUMBER.sql is the store of a report that an
// earlier program made, NUMBER.txt is what people read in it. A new format leaves those before it readable,
// and gets a pair of its own.
#include <SQLiteCpp/SQLiteCpp.h>

#include <nlohmann/json.hpp>

#include "report.h"
#include "report_under_test.h"

namespace test {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> formats() {
    std::vector<std::string> numbers;
    for (const auto& entry : fs::directory_iterator(QV_FORMATS)) {
        if (entry.path().extension() == ".sql") numbers.push_back(entry.path().stem());
    }
    return numbers;
}

class FormatTest : public ReportTest, public testing::WithParamInterface<std::string> {
protected:
    // The store as its program left it.
    fs::path stored() const {
        const auto file = dir() / "old.sqlite";
        SQLite::Database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
            .exec(read_file(fs::path(QV_FORMATS) / (GetParam() + ".sql")));
        return file;
    }

    // A command of qvhost and what it prints.
    std::string session(const std::vector<std::string>& arguments) {
        std::string text = "$ qvhost";
        for (const auto& argument : arguments)
            text += " " + (argument.front() == '/' ? std::string("REPORT") : argument);
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return text + "\n" + outcome.out + "\n";
    }
};

TEST_P(FormatTest, IsReadAsItWas) {
    const auto store = stored();
    auto read = session({"show", store, "--all", "--no-pager"});
    read += session({"query", store, "SELECT item1, item2, item4 FROM SENSORINFO ORDER BY qv_seq",
                     "--format", "csv"});
    read += session({"query", store,
                     "SELECT id, sql_name, reason FROM qv_table WHERE reason <> '' ORDER BY id",
                     "--format", "csv"});
    const auto made = run({"export", store, "--format", "json"});
    EXPECT_EQ(made.exit, 0) << made.err;
    read += "$ qvhost export REPORT --format json, a record a line\n" + condensed(made.out);

    const auto expected = fs::path(QV_FORMATS) / (GetParam() + ".txt");
    if (read == read_file(expected)) return;
    const auto actual = fs::path(QV_ACTUAL_FORMATS) / (GetParam() + ".txt");
    write_file(actual, read);
    const auto difference =
        run(Invocation{.arguments = {"-u", expected, actual}, .program = {"diff"}});
    FAIL() << difference.out << "\nRead it and, if it is right: cp " << actual << " " << expected;
}

TEST_P(FormatTest, IsExportedInEveryFormat) {
    const auto store = stored();
    for (const char* format : {"csv", "html"}) {
        const auto output = dir() / format;
        const auto outcome = run({"export", store, "--format", format, "--output", output});
        EXPECT_EQ(outcome.exit, 0) << format << ": " << outcome.err;
        EXPECT_FALSE(fs::is_empty(output));
    }
    EXPECT_NE(read_file(dir() / "csv" / "SENSORINFO.csv").find("CPU1 Temp"), std::string::npos);
    EXPECT_TRUE(fs::exists(dir() / "html" / "index.html"));
}

INSTANTIATE_TEST_SUITE_P(Every, FormatTest, testing::ValuesIn(formats()));

using Formats = ReportTest;

// Whoever gives the report a new format keeps one of the format before.
TEST_F(Formats, OneOfEachIsKept) {
    const auto report = nlohmann::json::parse(
        read_file(replayed("x86_64-unreadable-product") / "report" / "report.json"));
    const int today = report.value("format", 0);
    for (int format = 0; format < std::max(today, 1); ++format) {
        const auto file = fs::path(QV_FORMATS) / (std::to_string(format) + ".sql");
        EXPECT_TRUE(fs::exists(file)) << file;
    }
}

}  // namespace

}  // namespace test
