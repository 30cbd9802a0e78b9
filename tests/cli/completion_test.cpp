// What a shell gets to offer, where the names are not ours.
#include <fstream>

#include "report_under_test.h"

namespace test {

namespace {

using namespace std::string_literals;

using Completion = ReportTest;

TEST_F(Completion, NamesThatTheShellWouldRunAreNotOffered) {
    std::vector<qvhost::Record> records;
    for (const char* id :
         {"$(touch run)", "`touch run`", "a;b", "a b", "a\nb", "a'b", "\x1b[31m", "*"})
        records.push_back({id, "", -1, {{"v", "", "x"s}}});
    const auto outcome = run({"complete", "show", store_with(records), ""});
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "words\nEMPTY\nT\n");
}

TEST_F(Completion, NamesOfFilesAreWholeLines) {
    std::filesystem::create_directory(dir() / "files");
    for (const char* name : {"two\nlines.sqlite", "$(touch run).sqlite", "plain.sqlite"})
        std::ofstream(dir() / "files" / name) << "";
    const auto folder = (dir() / "files").string() + "/";
    const auto outcome = run({"complete", "show", folder});
    EXPECT_EQ(outcome.out,
              "paths\n" + folder + "$(touch run).sqlite\n" + folder + "plain.sqlite\n");
}

}  // namespace

}  // namespace test
