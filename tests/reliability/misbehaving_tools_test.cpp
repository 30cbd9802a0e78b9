// A tool that misbehaves in one of many ways, among others that do not: the collection ends, says what
// happened, and has all other tables as it would have had them.
#include <unistd.h>

#include <csignal>

#include "server.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;

struct Misbehaviour {
    const char* name;
    const char* script;
    const char* outcome;  // of the command
    const char* reason;   // of the first table of events
    int most_records;
};

constexpr const char* kWhole = "cat \"$recorded/c0_events.txt\"; ";

class MisbehavingTools : public ServerTest, public testing::WithParamInterface<Misbehaviour> {};

TEST_P(MisbehavingTools, TheOthersAreAsTheyWouldHaveBeen) {
    ASSERT_EQ(collect_storage().exit, 0);
    const auto expected = others(log_dir());
    ASSERT_GT(expected.size(), 20u);
    fs::remove_all(log_dir());

    const auto& [name, script, outcome, reason, most] = GetParam();
    events_do(script);
    // How much PrintsMuch prints.
    const long bytes = setting("QV_TEST_BYTES", 64L << 20, 2L << 30);
    ::setenv("QV_TEST_BYTES", std::to_string(bytes).c_str(), 1);
    const bool much = std::string(name) == "PrintsMuch";  // which may take its time
    const auto ended = collect_storage(
        {"--tool-timeout", much ? "600" : "7", "--silence-timeout", "5", "--capture-size", "4096"});
    EXPECT_EQ(ended.exit, std::string(outcome).starts_with("stopped") ? 3 : 0) << ended.err;
    EXPECT_EQ(others(log_dir()), expected);
    EXPECT_EQ(this->outcome(log_dir(), "show events > "), outcome);
    EXPECT_EQ(this->reason(log_dir(), "EVENTLOG1"), reason);
    EXPECT_LE(counts(store_in(log_dir())).at("EVENTLOG1"), most);
    EXPECT_EQ(family(), std::vector<pid_t>());
}

class Fleeing : public ServerTest {
protected:
    Outcome collect_and_expect_nothing_left(const std::vector<std::string>& more = {}) {
        const auto outcome = collect_storage(more);
        EXPECT_EQ(family(), std::vector<pid_t>()) << "left when the program has ended";
        EXPECT_EQ(others(log_dir()), expected_);
        return outcome;
    }
    void SetUp() override {
        ServerTest::SetUp();
        ASSERT_EQ(collect_storage().exit, 0);
        expected_ = others(log_dir());
        fs::remove_all(log_dir());
    }
    std::string capture() const { return read_file(log_dir() / "raidevents.txt"); }

private:
    nlohmann::ordered_json expected_;
};

TEST_F(Fleeing, WhatIsLeftInTheBackgroundEndsWithItsCommand) {
    events_do("sleep 7771 & cat \"$recorded/c0_events.txt\"; exit 0");
    EXPECT_EQ(collect_and_expect_nothing_left().exit, 0);
    EXPECT_EQ(outcome(log_dir(), "show events > "), "");
}

// setsid(1) leaves its caller, which then looks as if it had ended.
TEST_F(Fleeing, ASessionOfItsOwnEndsWithItsCommand) {
    events_do("exec setsid sh -c 'while :; do echo more; sleep 0.05; done'");
    collect_and_expect_nothing_left({"--tool-timeout", "3"});
    const auto then = capture();
    ::usleep(300'000);
    EXPECT_EQ(capture(), then) << "the capture grows behind the report";
}

TEST_F(Fleeing, ASessionOfItsOwnHasTheSameLimits) {
    events_do("setsid -w sh -c 'while :; do echo more; sleep 0.2; done'");
    collect_and_expect_nothing_left({"--tool-timeout", "3", "--silence-timeout", "2"});
    EXPECT_EQ(outcome(log_dir(), "show events > "), "stopped at its time limit");
    const auto then = capture();
    ::usleep(500'000);
    EXPECT_EQ(capture(), then);
}

TEST_F(Fleeing, ASessionOfItsOwnIsHeard) {
    events_do("setsid -w sh -c 'for i in 1 2 3 4 5 6; do echo $i; sleep 0.5; done'");
    collect_and_expect_nothing_left({"--tool-timeout", "60", "--silence-timeout", "2"});
    EXPECT_EQ(outcome(log_dir(), "show events > "), "");
    EXPECT_EQ(capture(), "1\n2\n3\n4\n5\n6\n");
}

// Twice away from its parent, in sessions of their own, while others are started.
TEST_F(Fleeing, DaemonsEndWithTheirCommand) {
    events_do(
        "for i in 1 2 3 4 5; do setsid setsid sh -c '(setsid sleep 600 &) & sleep 600' & done; "
        "sleep 0.3; cat \"$recorded/c0_events.txt\"");
    EXPECT_EQ(collect_and_expect_nothing_left().exit, 0);
}

const Misbehaviour kMisbehaviours[] = {
    {"Hangs", "sleep 600", "stopped because it said no more",
     "storcli: stopped because it said no more", 0},
    {"LeavesAChildThatIgnoresSignals",
     "(trap '' TERM INT HUP; exec sleep 600) & cat \"$recorded/c0_events.txt\"; wait",
     "stopped because it said no more", "storcli: stopped because it said no more", 3000},
    {"TalksForEver", "while :; do echo 'nothing of use'; sleep 0.1; done",
     "stopped at its time limit", "storcli: stopped at its time limit", 0},
    {"ClosesItsOutputAndLivesOn", "exec >&- 2>&-; sleep 600", "stopped because it said no more",
     "storcli: stopped because it said no more", 0},
    {"PrintsNothing", "exit 0", "", "storcli printed nothing", 0},
    {"PrintsNuls", "head -c 100000 /dev/zero", "", "nothing to report in raidevents.txt", 0},
    {"PrintsMarkup", "echo '<html><script>x</script>seqNum: </html>'", "",
     "nothing to report in raidevents.txt", 1},
    {"PrintsMuch", "head -c $QV_TEST_BYTES /dev/zero | tr '\\000' 'x'", "",
     "nothing to report in raidevents.txt", 0},
    {"PrintsRubbish", "head -c 300000 /dev/urandom", "", "nothing to report in raidevents.txt", 0},
    {"NeedsATerminal", "[ -t 0 ] || { echo 'must be run from a terminal' >&2; exit 7; }",
     "exit code 7", "storcli failed with code 7: must be run from a terminal", 0},
    {"AsksAndWaits", "read answer; echo \"got $answer\"", "", "nothing to report in raidevents.txt",
     0},
    {"Fails", "exit 255", "exit code 255", "storcli failed with code 255", 0},
    // The tool is there and runs; what it starts is not.
    {"LacksAProgramOfItsOwn", "echo 'helper: not found' >&2; exit 127", "exit code 127",
     "storcli failed with code 127: helper: not found", 0},
    {"MayNotRunAProgramOfItsOwn", "echo 'sh: 1: /opt/helper: Permission denied' >&2; exit 126",
     "exit code 126", "storcli failed with code 126: sh: 1: /opt/helper: Permission denied", 0},
};

INSTANTIATE_TEST_SUITE_P(Each, MisbehavingTools, testing::ValuesIn(kMisbehaviours),
                         [](const auto& one) { return std::string(one.param.name); });

class BySignal : public ServerTest, public testing::WithParamInterface<int> {};

TEST_P(BySignal, WhatItHadSaidIsKeptAndCalledPartial) {
    const auto number = std::to_string(GetParam());
    events_do(kWhole + ("kill -" + number + " $$; sleep 600"));
    ASSERT_EQ(collect_storage({"--tool-timeout", "20"}).exit, 0);
    const auto killed = outcome(log_dir(), "show events > ");
    EXPECT_NE(killed.find("killed by signal " + number), std::string::npos) << killed;
    EXPECT_EQ(reason(log_dir(), "EVENTLOG1"), "storcli: " + killed);
    EXPECT_EQ(counts(store_in(log_dir())).at("EVENTLOG1"), 2999);
    EXPECT_EQ(counts(store_in(log_dir())).at("PDLIST"), 12);
}

INSTANTIATE_TEST_SUITE_P(Each, BySignal,
                         testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGILL, SIGTRAP, SIGABRT, SIGBUS,
                                         SIGFPE, SIGKILL, SIGUSR1, SIGSEGV, SIGUSR2, SIGPIPE,
                                         SIGALRM, SIGTERM, SIGXCPU, SIGXFSZ, SIGSYS));

using MissingTools = ServerTest;

TEST_F(MissingTools, AreToldFor) {
    for (const auto& tool : builds()) fs::remove(tool);
    ASSERT_EQ(collect_storage().exit, 0);
    EXPECT_EQ(without_build(reason(log_dir(), "EVENTLOG1")), "storcli is not in qv_tools");
    EXPECT_EQ(outcome(log_dir(), "show events > "), "exit code 127: not installed");
}

// A replay has a file for each recorded tool, also where the shell had found none.
TEST_F(MissingTools, AreMissingInAReplayToo) {
    for (const auto& tool : builds())
        write_file(tool, "#!/bin/sh\necho \"sh: 1: ${0##*/}: not found\" >&2\nexit 127\n");
    const auto outcome = collect_storage();
    ASSERT_EQ(outcome.exit, 0) << outcome.err;
    const auto why = reason(log_dir(), "EVENTLOG1");
    EXPECT_TRUE(why.ends_with(" is not installed (exit code 127)")) << why;
}

// The collection makes what lies in qv_tools executable; what is no program stays one.
TEST_F(MissingTools, ADirectoryIsNoTool) {
    for (const auto& tool : builds()) {
        fs::remove(tool);
        fs::create_directory(tool);
    }
    ASSERT_EQ(collect_storage().exit, 0);
    EXPECT_EQ(outcome(log_dir(), "show events > "), "exit code 126");
    EXPECT_EQ(without_build(reason(log_dir(), "EVENTLOG1")),
              "storcli cannot be run: it is a directory");
}

TEST_F(MissingTools, AFileThatOthersMayWriteIsNoTool) {
    const auto elsewhere = dir() / "elsewhere";
    fs::create_directory(elsewhere);
    for (const auto& tool : builds()) fs::remove(tool);
    write_file(elsewhere / "storcli", "#!/bin/sh\necho ran >'" + (dir() / "ran").string() + "'\n");
    fs::permissions(elsewhere / "storcli", fs::perms::all);
    auto collecting = this->collecting();
    collecting.environment["PATH"] = elsewhere.string() + ":/usr/bin:/bin";
    const auto outcome = run(collecting);
    ASSERT_EQ(outcome.exit, 0) << outcome.err;
    EXPECT_FALSE(fs::exists(dir() / "ran"));
    const auto why = reason(log_dir(), "EVENTLOG1");
    EXPECT_TRUE(why.starts_with((elsewhere / "storcli is not run: ").string())) << why;
    EXPECT_NE(outcome.err.find("qvhost: " + why), std::string::npos) << outcome.err;
}

struct Unrunnable {
    const char* name;
    std::string content;
    const char* why;
};

// Programs that the system cannot start, each as the layer's script starts it and as the plug-in does.
class UnrunnableTools : public ServerTest, public testing::WithParamInterface<Unrunnable> {};

TEST_P(UnrunnableTools, AreToldFor) {
    for (const auto& tool : builds()) write_file(tool, GetParam().content);
    for (const std::vector<std::string>& options : {{}, std::vector<std::string>{"--no-compat"}}) {
        fs::remove_all(log_dir());
        const auto outcome = collect_storage(options);
        EXPECT_EQ(outcome.exit, 3) << outcome.err;
        EXPECT_EQ(without_build(reason(log_dir(), "EVENTLOG1")),
                  std::string("storcli cannot be run: ") + GetParam().why);
    }
}

// A program of this machine, changed.
std::string changed_program(std::size_t at, const std::string& bytes) {
    auto program = read_file("/bin/true");
    program.replace(at, bytes.size(), bytes);
    return program;
}

std::string program_without_loader() {
    auto program = read_file("/bin/true");
    const auto at = program.find("/lib");
    program.replace(at, 4, "/LIB");
    return program;
}

constexpr std::size_t kMachineAt = 18;  // in the header of a program

const Unrunnable kUnrunnable[] = {
    {"NoInterpreter", "#!/no/such/shell -e\n", "its interpreter /no/such/shell is not installed"},
    {"FromWindows", "#!/bin/sh\r\necho\r\n", "its first line ends with a carriage return"},
    {"ForAnotherMachine", changed_program(kMachineAt, "\x15"),
     "it is a program for another kind of machine"},
    {"CutOff", read_file("/bin/true").substr(0, 30), "it is cut off"},
    {"Empty", "", "it is an empty file"},
    {"LacksALibrary",
     "#!/bin/sh\necho \"$0: error while loading shared libraries: libx.so.1: cannot open shared object "
     "file: No such file or directory\" >&2\nexit 127\n",
     "it needs the library libx.so.1, which is not installed"},
};

INSTANTIATE_TEST_SUITE_P(Each, UnrunnableTools, testing::ValuesIn(kUnrunnable),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(MissingTools, AProgramWithoutItsLoaderIsToldFor) {
    const auto program = program_without_loader();
    for (const auto& tool : builds()) write_file(tool, program);
    ASSERT_EQ(collect_storage().exit, 3);
    const auto why = without_build(reason(log_dir(), "EVENTLOG1"));
    EXPECT_TRUE(why.starts_with("storcli cannot be run: it needs /LIB")) << why;
    EXPECT_TRUE(why.ends_with(", which is not installed")) << why;
}

}  // namespace

}  // namespace test
