// Hits at random moments: the program, its child or both, by each signal. QV_TEST_MOMENTS says how many.
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <thread>

#include "server.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;

class Moments : public ServerTest {
protected:
    // Every record that is there is one of a whole collection's, in its place.
    void expect_beginning(const nlohmann::ordered_json& whole) const {
        const auto found = report_json(log_dir())["records"];
        ASSERT_LE(found.size(), whole.size());
        for (std::size_t i = 0; i < found.size(); ++i) ASSERT_EQ(found[i], whole[i]) << i;
    }
};

TEST_F(Moments, LoseNothingThatWasFiledAndLeaveNothingBehind) {
    // A little time in every step.
    for (const auto& tool : builds()) {
        const auto script = read_file(tool);
        write_file(tool, "#!/bin/sh\nsleep 0.03\n" + script.substr(script.find('\n') + 1));
    }
    ASSERT_EQ(collect_storage().exit, 0);
    const auto whole = report_json(log_dir())["records"];
    ASSERT_GT(whole.size(), 3000u);

    std::mt19937 random(static_cast<unsigned>(setting("QV_TEST_SEED", 1, 1)));
    const long moments = repetitions("QV_TEST_MOMENTS", 16, 100);
    for (int i = 0; i < moments; ++i) {
        fs::remove_all(log_dir());
        constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGKILL};
        const int signal = kSignals[random() % 4];
        const auto target = random() % 3;  // the program, its child, both
        const auto moment = std::chrono::milliseconds(random() % 900);
        SCOPED_TRACE("hit " + std::to_string(i) + ": signal " + std::to_string(signal) +
                     ", target " + std::to_string(target) + ", after " +
                     std::to_string(moment.count()) + " ms");
        const pid_t program = start(collecting({"--quiet"}));
        std::this_thread::sleep_for(moment);
        const pid_t child = child_of(program);
        if (target != 0 && child != 0) ::kill(child, target == 1 ? SIGKILL : signal);
        if (target != 1) ::kill(program, signal);
        const auto outcome = finish(program);
        expect_end_of_hit(outcome, signal);
        wait_until("no process is left", [&] { return family().empty(); });
        if (!fs::exists(log_dir() / "report")) continue;  // it had not begun

        // What the next run says, whatever the moment.
        const auto shown = run({"show", log_dir(), "RAIDINFO", "--no-pager"});
        if (shown.exit != 0) {
            EXPECT_FALSE(fs::exists(log_dir() / "report" / "collection.journal")) << shown.err;
            continue;  // killed before there was anything to keep
        }
        counts(store_in(log_dir()));  // passes SQLite's own check
        expect_beginning(whole);
        EXPECT_FALSE(fs::exists(log_dir() / "report" / "collection.journal"));
        const auto again = run(collecting({"--quiet"}));
        EXPECT_EQ(again.exit, 0) << again.err;
        EXPECT_NE(again.err.find("found "), std::string::npos) << again.err;
        EXPECT_EQ(report_json(log_dir())["records"], whole);
    }
}

TEST_F(Moments, ASecondInterruptEndsItAtOnce) {
    events_do("trap '' INT TERM HUP; sleep 600");
    for (const int pause : {0, 50}) {
        fs::remove_all(log_dir());
        const pid_t program = start(collecting({"--quiet"}));
        wait_until("the tool hangs", [&] { return fs::exists(log_dir() / "c0_raidevents.txt"); });
        ::kill(program, SIGINT);
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
        ::kill(program, SIGINT);
        const auto outcome = finish(program);
        EXPECT_TRUE(outcome.signal == SIGINT || outcome.exit == 3) << outcome.exit;
        wait_until("no process is left", [&] { return family().empty(); });
        EXPECT_EQ(run({"show", log_dir(), "RAIDINFO", "--no-pager"}).exit, 0);
    }
}

TEST_F(Moments, ATerminalThatGoesAwayEndsItAndTheReportIsThere) {
    events_do("sleep 600");
    const auto invocation = collecting();
    int terminal = -1;
    const pid_t program = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (program == 0) {
        ::setenv("QV_TEST_RUN", dir().c_str(), 1);
        std::vector<char*> arguments;
        auto texts = invocation.program;
        texts.insert(texts.end(), invocation.arguments.begin(), invocation.arguments.end());
        for (auto& text : texts) arguments.push_back(text.data());
        arguments.push_back(nullptr);
        ::execv(arguments[0], arguments.data());
        ::_exit(99);
    }
    wait_until("the tool hangs", [&] { return fs::exists(log_dir() / "c0_raidevents.txt"); });
    ::close(terminal);
    int status = 0;
    wait_until("the program ends", [&] { return ::waitpid(program, &status, WNOHANG) != 0; });
    // The summary has nowhere to go either.
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
    EXPECT_EQ(family(), std::vector<pid_t>());
    EXPECT_EQ(meta(store_in(log_dir()), "status"), "incomplete");
    EXPECT_TRUE(meta(store_in(log_dir()), "incomplete_because").starts_with("ended by Hangup"))
        << meta(store_in(log_dir()), "incomplete_because");
    EXPECT_EQ(counts(store_in(log_dir())).at("RAIDINFO"), 1);
    EXPECT_FALSE(fs::exists(log_dir() / "report" / "collection.journal"));
}

TEST_F(Moments, AnOutputThatTakesNothingIsAnErrorAndTheReportIsWhole) {
    auto invocation = collecting({"--quiet"});
    invocation.out_file = "/dev/full";
    const auto outcome = run(invocation);
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.err.find("standard output"), std::string::npos) << outcome.err;
    EXPECT_EQ(meta(store_in(log_dir()), "status"), "complete");

    fs::remove_all(log_dir());
    auto closed = collecting();
    closed.closed = {0, 1, 2};
    EXPECT_EQ(run(closed).exit, 1);
    EXPECT_EQ(meta(store_in(log_dir()), "status"), "complete");
}

}  // namespace

}  // namespace test
