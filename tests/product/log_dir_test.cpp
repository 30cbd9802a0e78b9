// Log directories: odd names, earlier collections, two runs at once.
#include <sys/stat.h>

#include <csignal>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using LogDirectory = ProductTest;

TEST_F(LogDirectory, AnyNameWillDo) {
    for (const std::string name : {"it's", "two words", "$(touch x)`y`", "line\nend", "\xff\xfe",
                                   "-dash", "[a,b]", "quote\"d", "a/b/new"}) {
        const auto log_dir = dir() / name;
        const auto outcome = run(
            {"collect", "--log-dir=" + log_dir.string(), "--plugin", plugin("calm"), "--quiet"});
        EXPECT_EQ(outcome.exit, 0) << name << ": " << outcome.err;
        EXPECT_EQ(counts(store_in(log_dir)).at("VALUES"), 3) << name;
        EXPECT_EQ(read_file(log_dir / "capture.txt"), "") << name;
        EXPECT_TRUE(fs::exists(log_dir / "capture.txt")) << name;
        EXPECT_EQ(outcome.out.find('\xff'), std::string::npos) << "raw bytes on the terminal";
        const auto lines = lines_of(outcome.out);
        EXPECT_TRUE(lines.back().starts_with("Report: ")) << name << " stays in its line";
    }
}

TEST_F(LogDirectory, NamesBeyondTheInterfaceAreRefused) {
    const std::string longest(254 - dir().string().size() - 1, 'x');
    EXPECT_EQ(run({"collect", "--log-dir", dir() / longest, "--plugin", plugin("calm")}).exit, 0);
    const auto refused =
        run({"collect", "--log-dir", dir() / (longest + "x"), "--plugin", plugin("calm")});
    EXPECT_EQ(refused.exit, 1);
    EXPECT_FALSE(fs::exists(dir() / (longest + "x")));
}

TEST_F(LogDirectory, WhatIsNoDirectoryIsRefused) {
    write_file(log_dir(), "a file");
    const auto outcome = run(collect("calm"));
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.err.find(log_dir().string()), std::string::npos) << outcome.err;
    EXPECT_EQ(read_file(log_dir()), "a file");
}

TEST_F(LogDirectory, AnOpenDirectoryIsUsedWithAWarningAndLeftAsItIs) {
    fs::create_directory(log_dir());
    ASSERT_EQ(::chmod(log_dir().c_str(), 0755), 0);
    const auto outcome = run(collect("calm", {"--quiet"}));
    EXPECT_EQ(outcome.exit, 0);
    EXPECT_NE(outcome.err.find(log_dir().string()), std::string::npos);
    struct stat info {};
    ::stat(log_dir().c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777, 0755u);
}

std::vector<fs::path> earlier_reports(const fs::path& log_dir) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(log_dir)) {
        if (entry.path().filename().string().starts_with("report-")) found.push_back(entry.path());
    }
    return found;
}

TEST_F(LogDirectory, AnEarlierReportMovesAside) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto second = run(collect("calm", {"--table", "VALUES"}));
    EXPECT_EQ(second.exit, 0);

    const auto earlier = earlier_reports(log_dir());
    ASSERT_EQ(earlier.size(), 1u);
    EXPECT_NE(second.err.find(earlier[0].string()), std::string::npos) << second.err;
    EXPECT_EQ(counts(earlier[0] / "report.sqlite").at("ANOTHER"), 1);
    EXPECT_EQ(counts(store_in(log_dir())), (std::map<std::string, int>{{"VALUES", 3}}));
    EXPECT_EQ(log_texts(log_dir()).size(), 4u) << "the log is of the second run alone";

    ASSERT_EQ(run(collect("calm")).exit, 0);
    ASSERT_EQ(run(collect("calm")).exit, 0);
    EXPECT_EQ(earlier_reports(log_dir()).size(), 3u) << "none replaces another";
}

TEST_F(LogDirectory, TwoRunsAtOnceAreRefused) {
    const pid_t first = start(
        Invocation{.arguments = collect("faults"), .environment = {{"QV_TEST_FAULT", "hang"}}});
    wait_until("the first is in its fault", [&] {
        return read_file(log_dir() / "qvhost.log").find("enumerate M_FAULT") != std::string::npos;
    });
    const auto second = run(collect("calm"));
    EXPECT_EQ(second.exit, 1);
    EXPECT_NE(second.err.find("another collection"), std::string::npos) << second.err;

    const auto looking = run({"show", log_dir()});
    EXPECT_EQ(looking.exit, 0) << looking.err;
    EXPECT_TRUE(fs::exists(log_dir() / "report" / "collection.journal")) << "left to its owner";

    ::kill(first, SIGTERM);
    EXPECT_EQ(finish(first).exit, 3);
    EXPECT_EQ(counts(store_in(log_dir())).at("A_BEFORE"), 1000);
    EXPECT_EQ(run(collect("calm")).exit, 0) << "it is free again";
}

}  // namespace

}  // namespace test
