// The same records whatever surrounds the program, and nothing of its surroundings in the report.
#include <fcntl.h>

#include <set>

#include "server.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Surroundings = ServerTest;

TEST_F(Surroundings, LocalesAndTimeZonesChangeNothing) {
    ASSERT_EQ(collect_storage().exit, 0);
    const auto expected = report_json(log_dir())["records"];
    for (const char* locale :
         {"C", "POSIX", "en_US.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "xx_XX"}) {
        fs::remove_all(log_dir());
        auto invocation = collecting();
        invocation.environment = {{"LC_ALL", locale},
                                  {"LANG", locale},
                                  {"LANGUAGE", "tr:de"},
                                  {"TZ", "Asia/Kathmandu"},
                                  {"COLUMNS", "40"},
                                  {"POSIXLY_CORRECT", "1"},
                                  {"IFS", "x"},
                                  {"CDPATH", "/"},
                                  {"ENV", "/nonexistent"},
                                  {"GREP_OPTIONS", "-v"}};
        const auto outcome = run(invocation);
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_EQ(report_json(log_dir())["records"], expected) << locale;
    }
}

TEST_F(Surroundings, TheEnvironmentIsInNoFile) {
    auto invocation = collecting({"--log-level", "4"});
    invocation.environment = {{"SECRET_TOKEN", "correct-horse-battery"}};
    ASSERT_EQ(run(invocation).exit, 0);
    for (const auto& entry : fs::recursive_directory_iterator(log_dir())) {
        if (!entry.is_regular_file()) continue;
        EXPECT_EQ(read_file(entry.path()).find("correct-horse"), std::string::npos) << entry.path();
    }
}

TEST_F(Surroundings, TwoCollectionsAtATimeDoNotDisturbEachOther) {
    ASSERT_EQ(collect_storage().exit, 0);
    const auto expected = report_json(log_dir())["records"];
    auto one = collecting({"--quiet"});
    auto other = one;
    one.arguments[2] = dir() / "one";
    other.arguments[2] = dir() / "other";
    const pid_t first = start(one);
    const pid_t second = start(other);
    EXPECT_EQ(finish(first).exit, 0);
    EXPECT_EQ(finish(second).exit, 0);
    EXPECT_EQ(report_json(dir() / "one")["records"], expected);
    EXPECT_EQ(report_json(dir() / "other")["records"], expected);
}

// strace -y: "openat(AT_FDCWD</x>, "/tmp/y", O_WRONLY|O_CREAT...) = 3</tmp/y>"
TEST_F(Surroundings, NothingIsWrittenOutsideTheLogDirectory) {
    auto invocation = collecting({"--quiet"});
    invocation.environment = {{"LSAN_OPTIONS", "detect_leaks=0"}};  // it cannot, when traced
    const auto trace = dir() / "trace";
    invocation.program.insert(
        invocation.program.begin(),
        {"strace", "-f", "-qq", "-y", "-o", trace, "-e",
         "trace=openat,open,creat,mkdir,rename,renameat2,unlink,symlink,link"});
    ASSERT_EQ(run(invocation).exit, 0);
    std::set<std::string> others;
    for (const auto& line : lines_of(read_file(trace))) {
        const bool writes =
            line.find("O_WRONLY") != std::string::npos ||
            line.find("O_RDWR") != std::string::npos || line.find("O_CREAT") != std::string::npos ||
            line.find("mkdir(") != std::string::npos || line.find("rename") != std::string::npos ||
            line.find("unlink(") != std::string::npos;
        if (!writes || line.find(" = -1 ") != std::string::npos) continue;
        if (line.find(log_dir().string()) != std::string::npos) continue;
        if (line.find("\"/dev/null\"") != std::string::npos) continue;
        if (line.find("\"b.txt\"") != std::string::npos)
            continue;  // in the current directory: the log's
        others.insert(line);
    }
    EXPECT_EQ(others, std::set<std::string>());
}

}  // namespace

}  // namespace test
