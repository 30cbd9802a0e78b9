// The command line: exit statuses, and what goes to standard output and what to standard error.
#include <sstream>

#include "program.h"
#include "report.h"

namespace test {

namespace {

using Usage = ProductTest;

// "DIR" stands for the log directory and "NOTHING" for an empty argument.
std::vector<std::string> arguments_of(const std::string& line, const std::string& log_dir) {
    std::istringstream words(line);
    std::vector<std::string> arguments;
    for (std::string word; words >> word;)
        arguments.push_back(word == "DIR" ? log_dir : word == "NOTHING" ? "" : word);
    return arguments;
}

TEST_F(Usage, WrongCommandLinesEndWith2) {
    for (const char* line : {
             "",
             "observe",
             "collect",
             "collect --log-dir",
             "collect --log-dir NOTHING",
             "collect --log-dir DIR --log-level 5",
             "collect --log-dir DIR --log-level -1",
             "collect --log-dir DIR --log-level three",
             "collect --log-dir DIR --tool-timeout 0",
             "collect --log-dir DIR --tool-timeout 1.5",
             "collect --log-dir DIR --tool-timeout 99999999999",
             "collect --log-dir DIR --plugin NOTHING",
             "collect --log-dir DIR --module NOTHING",
             "collect --log-dir DIR --table NOTHING --quiet",
             "collect --log-dir DIR --unknown",
             "collect --log-dir DIR surplus",
             "replay --log-dir DIR",
             "show",
         }) {
        SCOPED_TRACE(line);
        const auto outcome = run(arguments_of(line, log_dir()));
        EXPECT_EQ(outcome.exit, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_FALSE(std::filesystem::exists(log_dir()));
}

// In words of the program's own, with the nearest name.
TEST_F(Usage, WhatIsWrongIsSaid) {
    const struct {
        const char* line;
        const char* says;
    } cases[] = {
        {"colect", "there is no command colect; did you mean collect?"},
        {"collect --log-di DIR", "collect has no option --log-di; did you mean --log-dir?"},
        {"collect", "collect needs --log-dir DIR"},
        {"collect --log-dir", "--log-dir needs a value: DIR"},
        {"show", "show needs REPORT"},
        {"show DIR --formt csv", "show has no option --formt; did you mean --format?"},
        {"export DIR --format jsno", "--format: there is no jsno; did you mean json?"},
        {"show DIR --format x",
         "--format: there is no x; it is one of table, blocks, csv, json, jsonl"},
        {"collect --log-dir DIR --profile helth",
         "--profile: there is no helth; did you mean health?"},
        {"collect --log-dir DIR --log-level 5", "--log-level: 5 is no whole number from 0 to 4"},
        {"collect --log-dir DIR --log-level 1x", "--log-level: 1x is no whole number from 0 to 4"},
    };
    for (const auto& [line, says] : cases) {
        const auto outcome = run(arguments_of(line, log_dir()));
        EXPECT_EQ(outcome.exit, 2) << line;
        EXPECT_EQ(lines_of(outcome.err).at(0), std::string("qvhost: ") + says) << line;
        EXPECT_NE(outcome.err.find("--help tells more"), std::string::npos) << outcome.err;
    }
    const std::string longest(300, 'x');
    const auto outcome = run({"show", dir() / longest});
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_EQ(outcome.err, "qvhost: " + (dir() / longest).string() + ": File name too long\n");
}

TEST_F(Usage, HelpAndVersionAreResults) {
    const auto version = run({"--version"});
    EXPECT_EQ(version.exit, 0);
    EXPECT_EQ(version.out, "qvhost " QV_VERSION "\n");
    EXPECT_EQ(version.err, "");

    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"collect", "--help"}, {"replay", "--help"}}) {
        const auto help = run(arguments);
        EXPECT_EQ(help.exit, 0);
        EXPECT_NE(help.out, "");
        EXPECT_EQ(help.out.find("collecting-child"), std::string::npos) << "it is hidden";
        EXPECT_EQ(help.err, "");
    }
}

// What packages are called, what the program says and what a report says of itself is one number.
TEST_F(Usage, AReportTellsTheVersionOfItsProgram) {
    EXPECT_EQ(run(collect("calm")).exit, 0);
    EXPECT_EQ(meta(store_in(log_dir()), "qvhost"), QV_VERSION);
    EXPECT_EQ(run({"--version"}).out, "qvhost " + meta(store_in(log_dir()), "qvhost") + "\n");
}

TEST_F(Usage, OptionsCanBeRepeated) {
    const auto outcome = run(collect("calm", {"--table", "ANOTHER", "--table", "EMPTY", "--module",
                                              "alpha", "--module", "zeta"}));
    EXPECT_EQ(outcome.exit, 0) << outcome.err;
}

TEST_F(Usage, OptionsBeforeTheMachineDoNotSwallowIt) {
    const auto outcome =
        run({"replay", "--module", "alpha", dir() / "machine", "--log-dir", log_dir()});
    EXPECT_EQ(outcome.exit, 1) << "the machine is what is missing, not the argument";
    EXPECT_NE(outcome.err.find("machine.json"), std::string::npos) << outcome.err;
}

// Every sub-command that prints, into a full disk and into nothing.
TEST_F(Usage, OutputThatCannotBeWrittenEndsWith1) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const std::vector<std::string> lines[] = {
        {"--version"},
        {"--help"},
        {"tables", "--plugin", plugin("calm")},
        {"show", log_dir()},
        {"collect", "--log-dir", dir() / "other", "--plugin", plugin("calm")},
    };
    for (const auto& arguments : lines) {
        SCOPED_TRACE(arguments[0]);
        const auto full = run(Invocation{.arguments = arguments, .out_file = "/dev/full"});
        EXPECT_EQ(full.exit, 1);
        EXPECT_NE(full.err.find("standard output"), std::string::npos) << full.err;
        const auto closed = run(Invocation{.arguments = arguments, .closed = {1}});
        EXPECT_EQ(closed.exit, 1);
    }
}

// With none of the three, files of the program's own must not get their numbers.
TEST_F(Usage, CollectsWithoutStandardStreams) {
    for (const auto& closed : {std::set<int>{0}, {2}, {0, 2}, {0, 1, 2}}) {
        std::filesystem::remove_all(log_dir());
        const auto outcome = run(Invocation{.arguments = collect("calm"), .closed = closed});
        EXPECT_EQ(outcome.exit, closed.contains(1) ? 1 : 0) << outcome.err;
        EXPECT_TRUE(std::filesystem::exists(log_dir() / "report" / "report.json"));
        EXPECT_FALSE(std::filesystem::exists(log_dir() / "report" / "collection.journal"));
    }
}

}  // namespace

}  // namespace test
