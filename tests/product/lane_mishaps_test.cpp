// Whatever ends one lane or all of them, or keeps one from starting: nothing that was filed is lost, and the others go
// on.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "lanes.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using LaneMishaps = LanesTest;

TEST_F(LaneMishaps, OneThatIsKilledLeavesTheOtherWhole) {
    both_stop();
    for (const char* name : {"storcli", "ipmitool"}) let_go(name);
    ASSERT_EQ(run(collecting()).exit, 0);
    const auto whole = collected(log_dir());
    const struct {
        unsigned lane;
        const char* runs;
        const char* other;
        std::set<std::string> whole;
        std::set<std::string> begun;
    } cases[] = {
        {1, "storcli", "ipmitool", kOfBmc, {"RAIDINFO"}},
        {2, "ipmitool", "storcli", kOfControllers, {"MCINFO"}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.lane);
        fs::remove_all(log_dir());
        for (const char* name : {"storcli", "ipmitool"})
            fs::remove(dir() / (std::string(name) + "_may_go"));
        const pid_t program = start_and_stop();
        const pid_t victim = lane(one.lane);
        ASSERT_NE(victim, 0);
        ::kill(victim, SIGKILL);
        wait_until("its tool has ended", [&] { return !runs(one.runs); });
        EXPECT_TRUE(runs(one.other)) << "the other one stays";
        EXPECT_NE(lane(3 - one.lane), 0);
        let_go(one.other);
        const auto outcome = finish(program);
        EXPECT_EQ(outcome.exit, 3) << outcome.err;
        EXPECT_NE(outcome.err.find("the collecting process was ended by Killed while it ran " +
                                   std::string(one.runs)),
                  std::string::npos)
            << outcome.err;
        auto all = one.whole;
        all.insert(one.begun.begin(), one.begun.end());
        expect_part_of(whole, all);
        EXPECT_EQ(family(), std::vector<pid_t>());
    }
}

TEST_F(LaneMishaps, AnInterruptEndsAll) {
    both_stop();
    const pid_t program = start_and_stop();
    ::kill(program, SIGINT);
    const auto outcome = finish(program);
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    EXPECT_NE(outcome.err.find("ended by Interrupt while it ran storcli_x"), std::string::npos)
        << outcome.err;
    EXPECT_NE(outcome.err.find("/c0 show events and ran ipmitool sensor"), std::string::npos)
        << outcome.err;
    EXPECT_EQ(family(), std::vector<pid_t>());
    std::vector<std::string> stopped;
    for (const auto& command : commands()) {
        if (!command.stopped_by.empty())
            stopped.push_back(std::to_string(command.lane) + " " + command.stopped_by);
    }
    EXPECT_EQ(stopped, (std::vector<std::string>{"1 user", "2 user"}));
    const auto records = counts(store_in(log_dir()));
    EXPECT_EQ(records.at("RAIDINFO"), 1);
    EXPECT_EQ(records.at("MCINFO"), 1);
}

TEST_F(LaneMishaps, OfACollectionThatWasKilledWithAllItRanEachIsThere) {
    both_stop();
    const pid_t program = start_and_stop();
    ::kill(program, SIGKILL);
    EXPECT_EQ(finish(program).signal, SIGKILL);
    wait_until("no process is left", [&] { return family().empty(); });
    const auto shown = run({"show", log_dir(), "RAIDINFO", "--no-pager"});
    EXPECT_EQ(shown.exit, 0) << shown.err;
    EXPECT_NE(shown.err.find("a collection that was broken off"), std::string::npos) << shown.err;
    const auto records = counts(store_in(log_dir()));
    EXPECT_EQ(records.at("RAIDINFO"), 1);
    EXPECT_EQ(records.at("MCINFO"), 1);
    EXPECT_EQ(records.at("SENSORINFO"), 0);
    const auto log = read_file(log_dir() / "qvhost.log");
    EXPECT_LT(log.find("EnumQV2Instances"), log.find("EnumBMCInstances"));
    EXPECT_NE(log.find("EnumBMCInstances"), std::string::npos);
    EXPECT_EQ(lanes(), (std::set<int>{1, 2}));
    expect_one_report();
}

TEST_F(LaneMishaps, ALimitInOneIsNoneOfTheOthers) {
    both_stop();
    let_go("storcli");
    ASSERT_EQ(run(collecting({"--module", "sampleModule1", "--module", "sampleModule2"})).exit, 0);
    const auto expected = collected(log_dir())["records"];
    fs::remove_all(log_dir());
    const auto outcome = run(collecting({"--limit", "ipmitool=5"}));
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    auto found = ordered_json::array();
    const auto told = collected(log_dir());
    for (const auto& record : told["records"]) {
        if (!kOfBmc.contains(record["table"])) found.push_back(record);
    }
    EXPECT_GE(found.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(found[i], expected[i]);
    for (const auto& command : commands())
        EXPECT_TRUE(command.stopped_by.empty() || command.tool == "ipmitool") << command.text;
    EXPECT_GT(counts(store_in(log_dir())).at("FRUINFO"), 0) << "what follows in its lane is asked";
}

// They write into one directory: a capture of one lane that is too large stops no command of the other.
TEST_F(LaneMishaps, ACaptureThatIsTooLargeStopsItsOwnCommandAlone) {
    become(sample("x86_64-kp220-healthy"));
    // It runs while the other capture becomes too large, and on until that command has ended.
    storcli_is("[ \"$*\" != '/c0 show events' ] || { " + stops_at("storcli") +
               "/bin/sleep 0.3; }\n{OLD}");
    is("path/ipmitool",
       "[ \"$1\" != sensor ] || { while [ ! -e '" + (dir() / "storcli_is_there").string() +
           "' ]; do /bin/sleep 0.01; done; trap '' XFSZ; while :; do /bin/cat /dev/zero; done; } 2>/dev/null\n"
           "[ \"$1\" != fru ] || : >'" +
           (dir() / "storcli_may_go").string() + "'\n{OLD}");
    const auto outcome = run(collecting({"--capture-size", "1"}));
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    std::vector<std::string> stopped;
    for (const auto& command : commands()) {
        if (!command.stopped_by.empty()) stopped.push_back(command.tool + " " + command.stopped_by);
    }
    EXPECT_EQ(stopped, std::vector<std::string>{"ipmitool size"});
    EXPECT_EQ(counts(store_in(log_dir())).at("RAIDINFO"), 1);
    EXPECT_GT(counts(store_in(log_dir())).at("EVENTLOG1"), 0);
}

// One lane ends long before the other; what it has told is there, whenever the rest is broken off.
TEST_F(LaneMishaps, WhatALaneToldThatHadEndedIsThere) {
    both_stop();
    for (const char* name : {"storcli", "ipmitool"}) let_go(name);
    ASSERT_EQ(run(collecting()).exit, 0);
    const auto whole = collected(log_dir());
    const struct {
        unsigned ends;
        const char* name;
        std::set<std::string> whole;
    } cases[] = {
        {1, "storcli", kOfControllers},
        {2, "ipmitool", kOfBmc},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.name);
        fs::remove_all(log_dir());
        for (const char* name : {"storcli", "ipmitool"})
            fs::remove(dir() / (std::string(name) + "_may_go"));
        const pid_t program = start_and_stop();
        let_go(one.name);
        wait_until("the lane has ended", [&] { return lane(one.ends) == 0; });
        ::kill(program, SIGKILL);
        EXPECT_EQ(finish(program).signal, SIGKILL);
        wait_until("no process is left", [&] { return family().empty(); });
        EXPECT_EQ(run({"show", log_dir(), "RAIDINFO", "--no-pager"}).exit, 0);
        auto all = one.whole;
        all.insert({"RAIDINFO", "MCINFO"});
        expect_part_of(whole, all);
        expect_one_report();
    }
}

// What a lane did not come to is told by its own end, not by that of another one.
TEST_F(LaneMishaps, ReasonsAreThoseOfTheirOwnLane) {
    become(sample("x86_64-kp220-healthy"));
    is("path/service", "exit 1");
    ASSERT_EQ(run(collecting()).exit, 0);
    const auto whole = reasons(store_in(log_dir()));
    EXPECT_EQ(whole.at("FRUINFO"), "not asked: service ipmi start: exit code 1");

    fs::remove_all(log_dir());
    storcli_is("[ \"$*\" != '/c0 show events' ] || { " + stops_at("storcli") + "}\n{OLD}");
    const pid_t program = start(collecting());
    wait_for("storcli");
    wait_until("the lane has ended", [&] { return lane(2) == 0; });
    ::kill(lane(1), SIGKILL);
    EXPECT_EQ(finish(program).exit, 3);
    const auto found = reasons(store_in(log_dir()));
    for (const auto& table : kOfBmc) EXPECT_EQ(found.at(table), whole.at(table)) << table;
    EXPECT_EQ(found.at("PDLIST"), "the collection ended before");
}

// Neither lane alone writes so much.
TEST_F(LaneMishaps, TheSizeOfACollectionIsThatOfAllLanes) {
    become(sample("x86_64-kp220-healthy"));
    const auto writes = [](const std::string& file) {
        return "{ /usr/bin/head -c 9000000 /dev/zero >" + file + "; exec /bin/sleep 600; }\n{OLD}";
    };
    storcli_is("[ \"$*\" != '/c0 show events' ] || " + writes("part1"));
    is("path/ipmitool", "[ \"$1\" != sensor ] || " + writes("part2"));
    const auto outcome = run(collecting({"--run-size", "16"}));
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    std::map<int, std::string> first;  // of each lane, that was stopped
    for (const auto& command : commands()) {
        const bool follows = first.contains(command.lane);
        EXPECT_EQ(command.started.has_value(), !follows) << command.text;
        if (!command.stopped_by.empty())
            first.emplace(command.lane,
                          command.tool.substr(0, 7) + ": " + qvhost::outcome(command));
    }
    const std::string stopped =
        ": stopped at a limit of size or number; the collection had reached its size limit";
    EXPECT_EQ(first,
              (std::map<int, std::string>{{1, "storcli" + stopped}, {2, "ipmitoo" + stopped}}));
    const auto records = counts(store_in(log_dir()));
    EXPECT_EQ(records.at("RAIDINFO"), 1) << "what came before is there";
    EXPECT_EQ(records.at("MCINFO"), 1);
    EXPECT_EQ(family(), std::vector<pid_t>());
}

// The host asks the BMC as well, in another process than the module that has waited for it in vain.
class LanesAndBmc : public LanesTest {
protected:
    // The command in a world of its own where there is /dev/ipmi0.
    std::vector<std::string> beside_device(const std::vector<std::string>& command) const {
        const auto devices = (dir() / "dev").string();
        fs::create_directories(devices);
        std::string script = "cd '" + devices + "' && : >ipmi0 &&";
        for (const std::string name : {"null", "zero", "full", "random", "urandom"})
            script += " : >" + name + " && mount --bind /dev/" + name + " " + name + " &&";
        script += " mount --rbind . /dev && cd / && exec \"$@\"";
        std::vector<std::string> whole{"unshare", "--mount", "sh", "-c", script, "sh"};
        whole.insert(whole.end(), command.begin(), command.end());
        return whole;
    }

    Invocation collecting_all(const std::vector<std::string>& more = {}) const {
        auto invocation = collecting(more);
        std::erase(invocation.arguments, "--plug-in-only");
        invocation.program = beside_device(invocation.program);
        invocation.environment["PATH"] +=
            ":/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
        return invocation;
    }

    // The commands to the BMC that the host itself has started in its own lane.
    std::vector<std::string> asked_by_host() const {
        std::vector<std::string> texts;
        for (const auto& command : commands()) {
            if (command.started && command.lane == 1 && command.tool.starts_with("ipmi"))
                texts.push_back(command.text.substr(0, command.text.find(" >")));
        }
        return texts;
    }
};

TEST_F(LanesAndBmc, ASilentBmcIsToldToTheLaneThatWouldAskNext) {
    if (run({.arguments = {"true"}, .program = beside_device({"env"})}).exit != 0)
        GTEST_SKIP() << "no file system can be mounted here";
    become(sample("x86_64-kp220-healthy"));
    run(collecting_all());
    const std::vector<std::string> questions{"ipmitool sel info", "ipmitool chassis status"};
    for (const auto& text : questions) {
        const auto asked = asked_by_host();
        EXPECT_EQ(std::count(asked.begin(), asked.end(), text), 1) << text;
    }

    fs::remove_all(log_dir());
    is("path/ipmitool", "exec /bin/sleep 600");
    for (const char* build :
         {"ipmiutil_x32", "ipmiutil_x64", "ipmiutil_x32_nh", "ipmiutil_x64_nh"}) {
        if (fs::exists(tools() / build)) is(build, "exec /bin/sleep 600");
    }
    const auto outcome = run(collecting_all({"--limit", "ipmitool=2", "--limit", "ipmiutil=2"}));
    EXPECT_EQ(outcome.exit, 3) << outcome.err;
    EXPECT_EQ(asked_by_host(), std::vector<std::string>());
    int not_asked = 0;
    for (const auto& command : commands()) not_asked += command.started ? 0 : 1;
    EXPECT_GT(not_asked, 7) << "the module itself";
    EXPECT_GT(counts(store_in(log_dir())).at("RAIDINFO"), 0);
}

TEST_F(LaneMishaps, HitsAtRandomMomentsLoseNothingAndLeaveNothing) {
    become(sample("x86_64-kp220-healthy"));
    storcli_is("/bin/sleep 0.1\n{OLD}");
    is("path/ipmitool", "/bin/sleep 0.1\n{OLD}");
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(run(collecting()).exit, 0);
    const auto takes = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begin);
    const auto whole = collected(log_dir());

    std::mt19937 random(static_cast<unsigned>(setting("QV_TEST_SEED", 1, 1)));
    const long moments = repetitions("QV_TEST_MOMENTS", 6, 100);
    for (long i = 0; i < moments; ++i) {
        fs::remove_all(log_dir());
        constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGKILL};
        const int signal = kSignals[random() % 4];
        const auto target = random() % 5;  // the program, lane 1, lane 2, both lanes, all
        const auto share = static_cast<long>(random() % 1000);
        const auto moment = takes * share / 1000;
        SCOPED_TRACE("hit " + std::to_string(i) + ": signal " + std::to_string(signal) +
                     ", target " + std::to_string(target) + ", after " +
                     std::to_string(moment.count()) + " of " + std::to_string(takes.count()) +
                     " ms");
        const pid_t program = start(collecting());
        std::this_thread::sleep_for(moment);
        std::vector<std::pair<pid_t, int>> hits;
        for (const unsigned number : {1u, 2u}) {
            if (target == number || target > 2) hits.emplace_back(lane(number), SIGKILL);
        }
        if (target == 0 || target == 4) hits.emplace_back(program, signal);
        for (const auto& [pid, with] : hits) {
            if (pid != 0) ::kill(pid, with);
        }
        const auto outcome = finish(program);
        expect_end_of_hit(outcome, signal);
        wait_until("no process is left", [&] { return family().empty(); });
        if (!fs::exists(log_dir() / "report")) continue;  // it had not begun

        const auto shown = run({"show", log_dir(), "RAIDINFO", "--no-pager"});
        if (shown.exit != 0) {
            EXPECT_FALSE(fs::exists(log_dir() / "report" / "collection.journal")) << shown.err;
        } else {
            // What was filed is there; a lane that nobody hit is whole.
            auto all = std::set<std::string>();
            if (outcome.exit == 3 && target == 1) all = kOfBmc;
            if (outcome.exit == 3 && target == 2) all = kOfControllers;
            if (outcome.exit == 0) {
                all = kOfControllers;
                all.insert(kOfBmc.begin(), kOfBmc.end());
            }
            expect_part_of(whole, all);
            expect_one_report();
        }
        const auto again = run(collecting());
        EXPECT_EQ(again.exit, 0) << again.err;
        EXPECT_EQ(collected(log_dir()), whole);
        expect_one_report();
    }
}

#ifndef QV_SANITIZED  // its runtime makes calls of its own
// The calls by which the program starts the process of its second lane.
class NoSecondLane : public LanesTest {
protected:
    // "clone3", 2: it is made with the program's second call of that name.
    using Call = std::pair<std::string, int>;

    Outcome run_traced(const std::vector<std::string>& options,
                       const std::vector<std::string>& more = {}) {
        auto invocation = collecting(more);
        std::erase(invocation.arguments, "--quiet");
        std::vector<std::string> strace{"/usr/bin/strace", "-qq", "-f",   "-b",
                                        "execve",          "-o",  trace()};
        strace.insert(strace.end(), options.begin(), options.end());
        invocation.program.insert(invocation.program.begin(), strace.begin(), strace.end());
        return run(invocation);
    }

    // Each is started with its settings in a file in memory, a pipe, and a new process.
    std::vector<Call> calls_for_second_lane() {
        EXPECT_EQ(run_traced({"-e", "trace=memfd_create,pipe2,clone,clone3,vfork"}).exit, 0);
        std::map<std::string, int> made;
        std::vector<Call> calls;
        for (const auto& line : lines_of(read_file(trace()))) {
            const auto pid = line.substr(0, line.find(' '));
            const auto begin = line.find_first_not_of(' ', pid.size());
            const auto name = line.substr(begin, line.find('(') - begin);
            if (line.find("resumed>") != std::string::npos) continue;
            ++made[pid + " " + name];
            if (made[pid + " memfd_create"] < 2) continue;
            calls.emplace_back(name, made[pid + " " + name]);
            if (name != "memfd_create" && name != "pipe2") break;
        }
        return calls;
    }

    // So that the call fails.
    static std::vector<std::string> without(const Call& call) {
        const auto& [name, place] = call;
        return {"-e", "trace=" + name, "-e",
                "inject=" + name + ":error=EAGAIN:when=" + std::to_string(place)};
    }

    fs::path trace() const { return dir() / "trace"; }
};

TEST_F(NoSecondLane, ItsModulesAreAskedInTheFirst) {
    become(sample("x86_64-kp220-healthy"));
    ASSERT_EQ(run(collecting({"--serial"})).exit, 0);
    const auto expected = told();
    fs::remove_all(log_dir());
    const auto calls = calls_for_second_lane();
    EXPECT_EQ(lanes(), (std::set<int>{1, 2}));
    ASSERT_EQ(calls.size(), 3u);
    for (const auto& call : calls) {
        SCOPED_TRACE(call.first + " " + std::to_string(call.second));
        fs::remove_all(log_dir());
        const auto outcome = run_traced(without(call));
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_NE(outcome.err.find("qvhost: lane 1 asks all modules that are left: "),
                  std::string::npos)
            << outcome.err;
        EXPECT_NE(outcome.err.find("  3 of 5  BMC information\n"), std::string::npos)
            << outcome.err;
        const auto found = told();
        EXPECT_EQ(found.collected, expected.collected);
        EXPECT_EQ(found.commands, expected.commands);
        EXPECT_EQ(found.status, expected.status);
        EXPECT_EQ(found.reasons, expected.reasons);
        auto log = found.log;
        EXPECT_EQ(std::erase_if(log,
                                [](const std::string& line) {
                                    return line.find("A further process could not be started") !=
                                           std::string::npos;
                                }),
                  1u);
        EXPECT_EQ(log, expected.log);
        EXPECT_EQ(lanes(), std::set<int>{1});
        expect_one_report();
        EXPECT_EQ(family(), std::vector<pid_t>());
    }
}

// Beside another lane nobody knows whose a file is that no command names.
TEST_F(NoSecondLane, AFileThatNoCommandNamesIsOfTheOneThatRuns) {
    become(sample("x86_64-kp220-healthy"));
    is("path/ipmitool",
       "[ \"$1\" != sensor ] || /usr/bin/head -c 2000000 /dev/zero >unnamed\n{OLD}");
    const std::vector<std::string> bound{"--capture-size", "1"};
    const auto stopped = [this] {
        std::vector<std::string> found;
        for (const auto& command : commands()) {
            if (!command.stopped_by.empty())
                found.push_back(command.tool + " " + command.stopped_by);
        }
        return found;
    };
    EXPECT_EQ(run(collecting(bound)).exit, 0);
    EXPECT_EQ(lanes(), (std::set<int>{1, 2}));
    EXPECT_EQ(stopped(), std::vector<std::string>());
    const auto calls = calls_for_second_lane();
    ASSERT_FALSE(calls.empty());
    fs::remove_all(log_dir());
    EXPECT_EQ(run_traced(without(calls.back()), bound).exit, 3);
    EXPECT_EQ(lanes(), std::set<int>{1});
    EXPECT_EQ(stopped(), std::vector<std::string>{"ipmitool size"});
}
#endif

}  // namespace

}  // namespace test
