// Log directories: odd names, earlier collections, two runs at once.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <set>

#include "files/descriptor.h"
#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using LogDirectory = ProductTest;

TEST_F(LogDirectory, AnyNameWillDo) {
    const auto ordinary =
        run({"collect", "--log-dir", dir() / "ordinary", "--plugin", plugin("calm"), "--quiet"});
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
        EXPECT_EQ(lines_of(outcome.out).size(), lines_of(ordinary.out).size())
            << name << " stays in its line: " << outcome.out;
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

// The directories below runs/, the oldest first.
std::vector<fs::path> runs_in(const fs::path& log_dir) {
    std::vector<fs::path> found;
    if (!fs::exists(log_dir / "runs")) return found;
    for (const auto& entry : fs::directory_iterator(log_dir / "runs"))
        found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

std::set<std::string> names_in(const fs::path& directory) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        names.insert(entry.path().filename().string());
    return names;
}

TEST_F(LogDirectory, AnEarlierRunMovesAsAWhole) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto files = names_in(log_dir());
    ASSERT_TRUE(files.contains("capture.txt"));
    const auto store = read_file(store_in(log_dir()));
    const auto second = run(collect("calm", {"--table", "VALUES"}));
    EXPECT_EQ(second.exit, 0);

    const auto earlier = runs_in(log_dir());
    ASSERT_EQ(earlier.size(), 1u);
    EXPECT_NE(second.err.find(earlier[0].string()), std::string::npos) << second.err;
    EXPECT_EQ(names_in(earlier[0]), files);
    EXPECT_EQ(read_file(store_in(earlier[0])), store);
    EXPECT_EQ(counts(store_in(log_dir())), (std::map<std::string, int>{{"VALUES", 3}}));
    EXPECT_EQ(log_texts(log_dir()).size(), 4u) << "the log is of the second run alone";

    const auto shown = run({"show", earlier[0], "ANOTHER"});
    EXPECT_EQ(shown.exit, 0) << shown.err;
    EXPECT_NE(shown.out.find("ANOTHER"), std::string::npos) << shown.out;

    ASSERT_EQ(run(collect("calm")).exit, 0);
    ASSERT_EQ(run(collect("calm")).exit, 0);
    EXPECT_EQ(runs_in(log_dir()).size(), 3u) << "none replaces another";
}

TEST_F(LogDirectory, WhatNoRunHasLeftStaysAndIsNamed) {
    fs::create_directory(log_dir());
    write_file(log_dir() / "before.txt", "mine");
    const auto first = run(collect("calm"));
    EXPECT_NE(first.err.find("holds what no collection has left there, and it stays: before.txt\n"),
              std::string::npos)
        << first.err;
    write_file(log_dir() / "notes.txt", "mine");
    fs::create_directory(log_dir() / "own");
    const auto second = run(collect("calm"));
    EXPECT_NE(second.err.find("and it stays: before.txt, notes.txt, own\n"), std::string::npos)
        << second.err;
    EXPECT_EQ(read_file(log_dir() / "before.txt") + read_file(log_dir() / "notes.txt"), "minemine");
    const auto earlier = runs_in(log_dir());
    ASSERT_EQ(earlier.size(), 1u);
    EXPECT_EQ(names_in(earlier[0]),
              (std::set<std::string>{"capture.txt", "console.txt", "qvhost.log", "report"}));
}

// Which files are the run's is recorded; their dates, which copies and clocks change, tell nothing.
TEST_F(LogDirectory, VerdictsRestOnTheRunsOwnFilesAlone) {
    const std::string critical =
        "Temp | 99.000 | degrees C | cr | na | na | na | na | 90.000 | na\n";
    fs::create_directory(log_dir());
    write_file(log_dir() / "sensorinfo.txt", critical);
    const auto tomorrow = fs::file_time_type::clock::now() + std::chrono::hours(24);
    fs::last_write_time(log_dir() / "sensorinfo.txt", tomorrow);
    EXPECT_EQ(run(collect("calm")).exit, 0);
    EXPECT_EQ(report_json(log_dir())["findings"].size(), 0u);

    // What somebody adds later is none of the run's either.
    write_file(dir() / "rules", "");
    write_file(log_dir() / "sdrinfo.txt", "Temp | 99.000 | degrees C | cr\n");
    // The lines below the first, which tells the report's age.
    const auto verdict = [&](std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"check", log_dir()});
        const auto said = run(more).out;
        return said.substr(said.find('\n'));
    };
    EXPECT_EQ(verdict({"--rules", dir() / "rules"}), verdict());

    fs::remove_all(log_dir());
    const auto sample = fs::path(QV_SAMPLES) / "x86_64-kp220-megaraid";
    ASSERT_EQ(run({"replay", sample, "--log-dir", log_dir(), "--quiet"}).exit, 0);
    const auto as_collected = verdict();
    EXPECT_NE(as_collected.find("\n[critical] "), std::string::npos) << as_collected;
    const fs::file_time_type long_ago{};
    for (const auto& entry : fs::directory_iterator(log_dir())) {
        if (entry.is_regular_file()) fs::last_write_time(entry.path(), long_ago);
    }
    write_file(log_dir() / "host_zpool.txt", "  pool: tank\n state: FAULTED\n");
    EXPECT_EQ(verdict({"--rules", dir() / "rules"}), as_collected);
}

TEST_F(LogDirectory, AMoveThatWasBrokenOffGoesOn) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto files = names_in(log_dir());
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto place = runs_in(log_dir()).at(0);
    // As if the first move had come no further than its captures.
    fs::remove_all(log_dir() / "report");
    fs::remove(log_dir() / "qvhost.log");
    for (const char* name : {"report", "qvhost.log"}) fs::rename(place / name, log_dir() / name);
    ASSERT_EQ(run(collect("calm")).exit, 0);
    ASSERT_EQ(runs_in(log_dir()), std::vector<fs::path>{place});
    EXPECT_EQ(names_in(place), files);
}

TEST_F(LogDirectory, OnlySoManyEarlierRunsAreKept) {
    for (int i = 0; i < 4; ++i) ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto runs = runs_in(log_dir());
    ASSERT_EQ(runs.size(), 3u);
    fs::create_directory(log_dir() / "runs" / "mine");
    ASSERT_EQ(run(collect("calm", {"--keep", "2"})).exit, 0);
    auto kept = runs_in(log_dir());
    ASSERT_EQ(kept.size(), 3u);
    EXPECT_FALSE(fs::exists(runs[0])) << "the oldest goes";
    EXPECT_TRUE(fs::exists(log_dir() / "runs" / "mine"));
    ASSERT_EQ(run(collect("calm", {"--keep", "0"})).exit, 0);
    EXPECT_EQ(runs_in(log_dir()), std::vector<fs::path>{log_dir() / "runs" / "mine"});
}

TEST_F(LogDirectory, EarlierRunsTakeOnlySoMuchRoom) {
    for (int i = 0; i < 3; ++i) ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto runs = runs_in(log_dir());
    ASSERT_EQ(runs.size(), 2u);
    write_file(runs[0] / "capture", std::string(8 << 20, 'x'));
    ASSERT_EQ(run(collect("calm", {"--keep-size", "9G"})).exit, 0);
    ASSERT_EQ(runs_in(log_dir()).size(), 3u);
    ASSERT_EQ(run(collect("calm", {"--keep-size", "8M"})).exit, 0);
    const auto kept = runs_in(log_dir());
    EXPECT_EQ(kept.size(), 3u);
    EXPECT_FALSE(fs::exists(runs[0])) << "the oldest goes";
    EXPECT_TRUE(fs::exists(runs[1]));
    ASSERT_EQ(run(collect("calm", {"--keep", "2", "--keep-size", "8M"})).exit, 0);
    EXPECT_EQ(runs_in(log_dir()).size(), 2u);
    ASSERT_EQ(run(collect("calm", {"--keep-size", "1"})).exit, 0);
    EXPECT_EQ(runs_in(log_dir()), std::vector<fs::path>{});
    EXPECT_EQ(run(collect("calm", {"--keep-size", "much"})).exit, 2);
}

// Services and people share a machine: whoever comes second is told who is there.
TEST_F(LogDirectory, OneRunAtATimeOnTheMachine) {
    const auto lock = dir() / "lock";
    const auto locked = [&](std::vector<std::string> arguments) {
        return run(Invocation{.arguments = std::move(arguments),
                              .environment = {{"QVHOST_LOCK", lock.string()}}});
    };
    {
        const qvhost::Descriptor held(::open(lock.c_str(), O_CREAT | O_RDWR, 0600));
        ASSERT_EQ(::flock(held.get(), LOCK_EX | LOCK_NB), 0);
        write_file(lock, "process 4711 since 2026-01-01T00:00:00Z, collecting into /elsewhere");
        const auto second = locked(collect("calm", {"--machine-lock"}));
        EXPECT_EQ(second.exit, 75);
        EXPECT_EQ(second.err,
                  "qvhost: another run asks this machine: process 4711 since 2026-01-01T00:00:00Z, "
                  "collecting into /elsewhere\n");
        EXPECT_FALSE(fs::exists(log_dir())) << "nothing was begun";
        const auto check = locked({"check", "--machine-lock", "--log-dir", dir() / "check"});
        EXPECT_EQ(check.exit, 75);
        EXPECT_TRUE(check.out.starts_with("UNKNOWN: another run asks this machine: process "))
            << check.out;
        EXPECT_EQ(locked(collect("calm")).exit, 0) << "without the option nobody is asked";
    }
    EXPECT_EQ(locked(collect("calm", {"--machine-lock"})).exit, 0);
    EXPECT_TRUE(read_file(lock).ends_with(", collecting into " + log_dir().string()));
    fs::remove(lock);
    fs::create_symlink(dir() / "victim", lock);
    EXPECT_EQ(locked(collect("calm", {"--machine-lock"})).exit, 1) << "a link is not followed";
    EXPECT_FALSE(fs::exists(dir() / "victim"));
}

TEST_F(LogDirectory, ItsRunsAreListed) {
    EXPECT_EQ(run({"list", dir() / "nothing"}).exit, 1);
    ASSERT_EQ(run(collect("calm")).exit, 0);
    ASSERT_EQ(
        run(Invocation{.arguments = collect("faults"), .environment = {{"QV_TEST_FAULT", "exit"}}})
            .exit,
        3);
    const auto listed = run({"list", log_dir()});
    EXPECT_EQ(listed.exit, 0) << listed.err;
    const auto lines = lines_of(listed.out);
    ASSERT_EQ(lines.size(), 4u) << listed.out;
    const std::vector<std::string> rows(lines.begin() + 2, lines.end());
    EXPECT_NE(rows[0].find("incomplete"), std::string::npos) << listed.out;
    EXPECT_NE(rows[0].find("1002"), std::string::npos) << listed.out;
    EXPECT_NE(rows[1].find(" complete"), std::string::npos) << listed.out;
    EXPECT_NE(rows[1].find("runs/" + runs_in(log_dir()).at(0).filename().string()),
              std::string::npos)
        << listed.out;
}

TEST_F(LogDirectory, RunsThatAreALinkAreRefused) {
    ASSERT_EQ(run(collect("calm")).exit, 0);
    const auto elsewhere = dir() / "elsewhere";
    fs::create_directory(elsewhere);
    fs::create_directory_symlink(elsewhere, log_dir() / "runs");
    const auto outcome = run(collect("calm"));
    EXPECT_TRUE(fs::is_empty(elsewhere)) << outcome.err;
}

// The verdict rests on the captures, wherever the run lies.
TEST_F(LogDirectory, AnEarlierRunIsJudgedAsItWas) {
    const fs::path machine = fs::path(QV_SAMPLES) / "x86_64-kp420-two-megaraid";
    const auto rules = dir() / "rules";
    write_file(rules, "");
    const std::vector<std::string> replay{"replay", machine, "--log-dir", log_dir(), "--quiet"};
    const auto judged = [&](const fs::path& report) {
        return nlohmann::json::parse(
            run({"check", report, "--format", "json", "--rules", rules}).out);
    };
    ASSERT_EQ(run(replay).exit, 0);
    const auto before = judged(log_dir());
    ASSERT_GT(before["findings"].size(), 1u);
    ASSERT_EQ(run(replay).exit, 0);
    EXPECT_EQ(judged(runs_in(log_dir()).at(0)), before);
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
