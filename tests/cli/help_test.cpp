// --help, and the promises of its examples.
#include "report_under_test.h"

namespace test {

namespace {

using Help = ReportTest;

TEST_F(Help, EveryCommandHasExamples) {
    for (const std::string command :
         {"collect", "replay", "tables", "show", "open", "query", "check", "export"}) {
        SCOPED_TRACE(command);
        const auto help = run({command, "--help"});
        EXPECT_EQ(help.exit, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_TRUE(help.out.starts_with("Usage: qvhost " + command + " [OPTION]..."));
        const auto examples = help.out.find("\nExamples:\n  qvhost " + command);
        EXPECT_NE(examples, std::string::npos) << help.out;
    }
}

TEST_F(Help, LinesFitTheTerminal) {
    const struct { unsigned terminal, longest; } rows[] = {{40, 46}, {80, 80}, {200, 100}};
    for (const auto& [terminal, longest] : rows) {
        const auto help = run(Invocation{.arguments = {"collect", "--help"},
                                         .environment = {{"COLUMNS", std::to_string(terminal)}}});
        for (const auto& line : lines_of(help.out)) {
            // What is to be copied is not wrapped.
            const bool whole = line.starts_with("  qvhost") || line.starts_with("  --");
            EXPECT_TRUE(whole || line.size() <= longest) << line;
        }
    }
}

TEST_F(Help, ExamplesOfQueriesWork) {
    const auto log = replayed("x86_64-kp220-megaraid");
    const std::string begin = "  qvhost query DIR \"";
    int examples = 0;
    for (const auto& line : lines_of(run({"query", "--help"}).out)) {
        if (!line.starts_with(begin)) continue;
        ++examples;
        const auto end = line.find('"', begin.size());
        const auto outcome = run({"query", log, line.substr(begin.size(), end - begin.size())});
        EXPECT_EQ(outcome.exit, 0) << line;
        EXPECT_GT(lines_of(outcome.out).size(), 2u) << line << "\n" << outcome.out;
    }
    EXPECT_EQ(examples, 6);
}

}  // namespace

}  // namespace test
