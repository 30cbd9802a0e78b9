// The same records whatever surrounds the program, and nothing of its surroundings in the report.
#include <fcntl.h>

#include <csignal>
#include <set>

#include "server.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Surroundings = ServerTest;

struct Locale {
    const char* name;
    const char* one;  // how 1.0 is printed in it
};

TEST_F(Surroundings, LocalesAndTimeZonesChangeNothing) {
    // The tools run in C, whatever the locale: else this one would say what it does not say otherwise.
    events_do("[ \"$(/usr/bin/printf %.1f 1)\" = 1.0 ] || exit 9; cat \"$recorded/c0_events.txt\"");
    ASSERT_EQ(collect_storage().exit, 0);
    const auto expected = report_json(log_dir())["records"];
    ASSERT_GT(expected.size(), 3000u);
    const auto known_leaks = dir() / "known_leaks";  // newlocale() loses the list of $LOCPATH
    write_file(known_leaks, "leak:argz_add_sep\n");
    for (const auto& [locale, one] :
         {Locale{"C", "1.0"}, Locale{"POSIX", "1.0"}, Locale{"en_US.UTF-8", "1.0"},
          Locale{"de_DE.UTF-8", "1,0"}, Locale{"tr_TR.UTF-8", "1,0"}, Locale{"xx_XX", "1.0"}}) {
        fs::remove_all(log_dir());
        auto invocation = collecting();
        invocation.environment = {{"LOCPATH", QV_LOCALES},
                                  {"LSAN_OPTIONS", "suppressions=" + known_leaks.string()},
                                  {"LC_ALL", locale},
                                  {"LANG", locale},
                                  {"LANGUAGE", "tr:de"},
                                  {"TZ", "Asia/Kathmandu"},
                                  {"COLUMNS", "40"},
                                  {"POSIXLY_CORRECT", "1"},
                                  {"IFS", "x"},
                                  {"CDPATH", "/"},
                                  {"ENV", "/nonexistent"},
                                  {"GREP_OPTIONS", "-v"}};
        auto printing = invocation;
        printing.program = {"/usr/bin/printf"};
        printing.arguments = {"%.1f", "1"};
        ASSERT_EQ(run(printing).out, one) << locale << " is not in force";
        const auto outcome = run(invocation);
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_EQ(report_json(log_dir())["records"], expected) << locale;
    }
}

TEST_F(Surroundings, TheEnvironmentAndOthersCommandLinesAreInNoFile) {
    const pid_t other = start(Invocation{
        .arguments = {"-c", "sleep 600; :", "correct-horse-staple"}, .program = {"/bin/sh"}});
    auto invocation = collecting({"--log-level", "4"});
    invocation.environment = {{"SECRET_TOKEN", "correct-horse-battery"}};
    ASSERT_EQ(run(invocation).exit, 0);
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(log_dir())) {
        if (!entry.is_regular_file()) continue;
        ++files;
        EXPECT_EQ(read_file(entry.path()).find("correct-horse"), std::string::npos) << entry.path();
    }
    EXPECT_GT(files, 10);
    EXPECT_EQ(read_file("/proc/" + std::to_string(other) + "/cmdline"),
              std::string("/bin/sh\0-c\0sleep 600; :\0correct-horse-staple\0", 45));
    for (const pid_t pid : family()) ::kill(pid, SIGKILL);
    EXPECT_EQ(finish(other).signal, SIGKILL);
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
        if (line.find("/qvhost-run-") != std::string::npos) continue;  // thrown away at the end
        others.insert(line);
    }
    EXPECT_EQ(others, std::set<std::string>());
}

}  // namespace

}  // namespace test
