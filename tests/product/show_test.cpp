// What is shown of reports and plug-ins.
#include "program.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Show = ProductTest;

const std::string kValuesTitle = "VALUES (Module zeta), 3 records\n";
const std::string kAnother =
    "ANOTHER (Module alpha), 1 record\n"
    "Value\n"
    "-----\n1\n";
const std::string kEmpty = "EMPTY (Module alpha), no records: unknown\n";

TEST_F(Show, ADirectoryAndAStoreAreTheSameReport) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto whole = run({"show", log_dir(), "--all"});
    EXPECT_EQ(whole.exit, 0);
    EXPECT_EQ(whole.err, "");
    EXPECT_NE(whole.out.find(kValuesTitle), std::string::npos) << whole.out;
    EXPECT_NE(whole.out.find(kAnother), std::string::npos) << whole.out;
    EXPECT_TRUE(whole.out.ends_with("\n" + kEmpty)) << "empty tables come last: " << whole.out;
    EXPECT_EQ(whole.out.find('\033'), std::string::npos) << "captured escapes are made visible";
    EXPECT_EQ(run({"show", store_in(log_dir()), "--all"}).out, whole.out);
}

TEST_F(Show, ChosenTablesComeInTheirOrder) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto chosen = run({"show", log_dir(), "EMPTY", "ANOTHER"});
    EXPECT_EQ(chosen.exit, 0);
    EXPECT_EQ(chosen.out, kEmpty + "\n" + kAnother);
}

TEST_F(Show, WhatIsNotThereIsNamed) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto table = run({"show", log_dir(), "ANOTHER", "NONE"});
    EXPECT_EQ(table.exit, 1);
    EXPECT_EQ(table.out, "");
    EXPECT_NE(table.err.find("NONE"), std::string::npos);

    const auto report = run({"show", dir() / "nowhere"});
    EXPECT_EQ(report.exit, 1);
    EXPECT_NE(report.err.find("nowhere"), std::string::npos);

    write_file(dir() / "text", "no store");
    const auto text = run({"show", dir() / "text"});
    EXPECT_EQ(text.exit, 1);
    EXPECT_NE(text.err.find((dir() / "text").string()), std::string::npos) << text.err;

    fs::create_directory(dir() / "void");
    EXPECT_EQ(run({"show", dir() / "void"}).exit, 1);
}

TEST_F(Show, AStoresStatusIsTextToo) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    qvhost::Store(store_in(log_dir()), qvhost::Store::Mode::update)
        .set_status("\033[2Jnothing\nto see");
    const auto shown = run({"show", log_dir(), "EMPTY"});
    EXPECT_EQ(shown.err, "qvhost: this collection is incomplete: \\x1b[2Jnothing\\x0ato see\n");
    EXPECT_EQ(shown.out, kEmpty);
}

TEST_F(Show, ShowingChangesNothing) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto before = read_file(store_in(log_dir()));
    ASSERT_EQ(run({"show", log_dir()}).exit, 0);
    EXPECT_EQ(read_file(store_in(log_dir())), before);
    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(log_dir() / "report"))
        files.insert(entry.path().filename());
    EXPECT_EQ(files, (std::set<std::string>{"assets", "data", "index.html", "report.json",
                                            "report.sqlite"}));
}

TEST_F(Show, TablesListsThePluginWithoutCollecting) {
    const auto outcome = run({"tables", "--plugin", plugin("calm")});
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    std::vector<std::string> tables;
    for (const auto& line : lines_of(outcome.out)) {
        for (const char* table : {"SURROUNDINGS", "VALUES", "ANOTHER", "EMPTY"}) {
            if (line.find(table) != std::string::npos) tables.emplace_back(table);
        }
    }
    EXPECT_EQ(tables, (std::vector<std::string>{"SURROUNDINGS", "VALUES", "ANOTHER", "EMPTY"}));
    EXPECT_NE(outcome.out.find("1 across"), std::string::npos) << outcome.out;
}

TEST_F(Show, TheInstalledPluginIsTheDefault) {
    const auto outcome = run({"tables"});
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
    for (const char* module :
         {"sampleModule1", "sampleModule2", "BMC_Info", "AMT_Info", "Windows_Related_Info"})
        EXPECT_NE(outcome.out.find(module), std::string::npos) << module;
    EXPECT_NE(outcome.out.find("PDLIST         Controller 0 PDLIST               20 across\n"),
              std::string::npos)
        << outcome.out;
    for (const auto& line : lines_of(outcome.out)) EXPECT_LE(line.size(), 80u) << line;
}

}  // namespace

}  // namespace test
