// Bounds of what a collection writes and starts, each at its edge: what is there stays and is read, the report says
// why it is not more, and all other tables are as they would have been.
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "server.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kMib = 1 << 20;
constexpr const char* kStopped = "stopped at a limit of size or number; ";
constexpr const char* kNotAsked = "not asked: a limit of size was reached; ";

class Bounds : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        ASSERT_EQ(collect_storage().exit, 0);
        expected_ = others(log_dir());
        fs::remove_all(log_dir());
    }

    // The recorded events, and so many bytes in all.
    static std::string events_of(std::uintmax_t bytes) {
        return "{ cat \"$recorded/c0_events.txt\"; yes ''; } | head -c " + std::to_string(bytes);
    }

    void expect_whole(const std::vector<std::string>& options) {
        fs::remove_all(log_dir());
        const auto ended = collect_storage(options);
        EXPECT_EQ(ended.exit, 0) << ended.err;
        EXPECT_EQ(outcome(log_dir(), "show events > "), "");
        EXPECT_EQ(others(log_dir()), expected_);
    }

    void expect_stopped(const std::vector<std::string>& options, const std::string& remark) {
        fs::remove_all(log_dir());
        const auto ended = collect_storage(options);
        EXPECT_EQ(ended.exit, 3) << ended.err;
        EXPECT_EQ(outcome(log_dir(), "show events > "), kStopped + remark);
        EXPECT_EQ(reason(log_dir(), "EVENTLOG1"), "storcli: " + (kStopped + remark));
        EXPECT_EQ(stopped_by(), "size");
        EXPECT_EQ(health_of_collection(), "unknown");
        EXPECT_EQ(family(), std::vector<pid_t>());
    }

    // Of the command that asks for the events first; another one follows.
    static std::string first_outcome(const fs::path& log_dir) {
        const qvhost::Store store(store_in(log_dir), qvhost::Store::Mode::read);
        for (const auto& command : store.commands()) {
            if (command.text.find("show events > ") != std::string::npos)
                return qvhost::outcome(command);
        }
        return "(no such command)";
    }

    std::string stopped_by() const {
        std::string found;
        const qvhost::Store store(store_in(log_dir()), qvhost::Store::Mode::read);
        for (const auto& command : store.commands()) {
            if (command.text.find("show events > ") != std::string::npos)
                found = command.stopped_by;
        }
        return found;
    }

    std::string health_of_collection() const {
        const auto report = report_json(log_dir());
        for (const auto& one : report["health"]) {
            if (one["subsystem"] == "collection") return one["health"];
        }
        return "(none)";
    }

    const nlohmann::ordered_json& expected() const { return expected_; }

private:
    nlohmann::ordered_json expected_;
};

TEST_F(Bounds, ACaptureOfJustThatSizeIsWhole) {
    events_do(events_of(kMib));
    expect_whole({"--capture-size", "1"});
    EXPECT_EQ(fs::file_size(log_dir() / "raidevents.txt"), kMib);
}

TEST_F(Bounds, ALargerCaptureIsCutAndRead) {
    events_do(events_of(kMib + 1));
    expect_stopped({"--capture-size", "1"}, "a file of it had reached the size limit");
    EXPECT_EQ(others(log_dir()), expected());
    EXPECT_EQ(fs::file_size(log_dir() / "raidevents.txt"), kMib + 1);
    EXPECT_EQ(counts(store_in(log_dir())).at("EVENTLOG1"), 2999);
    EXPECT_EQ(
        meta(store_in(log_dir()), "limits"),
        "run 7200 s, module 3600 s, archive 1800 s, tool 300 s, silence 120 s; all files 8GiB, "
        "an archive 4GiB, a capture 1MiB, a table 1MiB; 512 processes of a tool");
}

// It gets an error instead of the signal, and takes no notice.
TEST_F(Bounds, AToolThatWritesOnIsStopped) {
    events_do("trap '' XFSZ; while :; do cat /dev/zero; done 2>/dev/null");
    expect_stopped({"--capture-size", "1"}, "a file of it had reached the size limit");
    EXPECT_EQ(others(log_dir()), expected());
}

TEST_F(Bounds, TheWholeCollectionEndsInOrder) {
    events_do("i=0; while :; do i=$((i + 1)); head -c 1000000 /dev/zero >part$i; sleep 0.1; done");
    const auto ended = collect_storage({"--run-size", "16"});
    EXPECT_EQ(ended.exit, 3) << ended.err;
    EXPECT_EQ(first_outcome(log_dir()),
              kStopped + std::string("the collection had reached its size limit"));
    EXPECT_EQ(reason(log_dir(), "PDLIST"),
              kNotAsked + std::string("the collection had reached its size limit"));
    EXPECT_EQ(counts(store_in(log_dir())).at("RAIDINFO"), 1) << "what came before is there";
    EXPECT_TRUE(fs::exists(log_dir() / "report" / "index.html"));
}

TEST_F(Bounds, RecordsOfATableAreCut) {
    events_do(
        "yes \"$(printf 'seqNum: 0x1\\nTime: x\\nCode: 0x1\\nClass: 0\\nLocale: 0x02\\nEvent Description: %0450d\\n"
        "Event Data:\\n===========\\n' 0)\" | head -n 24000");
    const auto ended = collect_storage({"--table-size", "1"});
    EXPECT_EQ(ended.exit, 3) << ended.err;
    EXPECT_EQ(others(log_dir()), expected());
    std::string cut;
    for (const char* table : {"EVENTLOG1", "EVENTLOG2", "EVENTLOG3", "EVENTLOG4", "EVENTLOG5"}) {
        if (reason(log_dir(), table) == "broken off: its records had reached the size limit")
            cut += table;
    }
    EXPECT_NE(cut, "");
    EXPECT_NE(ended.out.find("its records had reached the size limit"), std::string::npos)
        << ended.out;
}

TEST_F(Bounds, SoManyProcessesAndNoMore) {
    const std::string some = "for i in 1 2 3 4 5 6 7 8 9 10; do sleep 600 & done; ";
    events_do(some + "sleep 1; cat \"$recorded/c0_events.txt\"");
    expect_whole({"--tool-processes", "20"});
    events_do(some + some + "sleep 600");
    expect_stopped({"--tool-processes", "20", "--tool-timeout", "60"}, "it had too many processes");
    EXPECT_EQ(others(log_dir()), expected());
}

// A fork bomb. It runs as a user of its own, whom the system gives so many processes and no more, and for so many
// seconds: should the limit not work, it is bounded all the same.
class ForkBomb : public Bounds {
protected:
    static constexpr const char* kUser = "61234";
    static constexpr const char* kMost = "400";

    void SetUp() override {
        Bounds::SetUp();
        if (::geteuid() != 0) GTEST_SKIP() << "only root can be another user";
        // More processes at a time than they may be.
        if (run(as_user("8",
                        {"/bin/sh", "-c", "for i in 1 2 3 4 5 6 7 8 9; do sleep 1 & done; wait"}))
                .exit == 0)
            GTEST_SKIP() << "the system does not bound a user's processes";
        wait_until("the shell's processes have ended", [&] { return family().empty(); });
        fs::permissions(dir(), fs::perms{0755});
        fs::create_directory(log_dir());
        fs::permissions(log_dir(), fs::perms::owner_all);
        ASSERT_EQ(::chown(log_dir().c_str(), user(), user()), 0) << std::strerror(errno);
    }

    static Invocation as_user(const std::string& most, std::vector<std::string> command) {
        std::vector<std::string> program{"prlimit",
                                         "--nproc=" + most,
                                         "setpriv",
                                         "--reuid=" + std::string(kUser),
                                         "--regid=" + std::string(kUser),
                                         "--clear-groups"};
        program.insert(program.end(), command.begin(), command.end());
        return Invocation{.arguments = {}, .program = program};
    }

    static uid_t user() { return static_cast<uid_t>(std::stoul(kUser)); }
};

TEST_F(ForkBomb, EndsWithItsTool) {
    events_do(
        "exec perl -e '$end = time + 30; while (time < $end) { fork; select(undef, undef, undef, 0.01) }'");
    for (const auto& tool : builds()) fs::permissions(tool, fs::perms{0755});
    auto invocation = as_user(kMost, {collecting().program});
    invocation.arguments =
        collecting({"--tool-processes", "100", "--tool-timeout", "60"}).arguments;
    const auto ended = run(invocation);
    EXPECT_EQ(family(), std::vector<pid_t>()) << "nothing outlives the command";
    EXPECT_EQ(ended.exit, 3) << ended.err;
    EXPECT_EQ(reason(log_dir(), "EVENTLOG1"),
              "storcli: " + (kStopped + std::string("it had too many processes")));
    EXPECT_EQ(stopped_by(), "size");
    EXPECT_EQ(others(log_dir()), expected());
}

TEST_F(Bounds, NothingBeginsOnADiskThatIsNearlyFull) {
    const auto ended = collect_storage({"--free-space", "1048576"});
    EXPECT_EQ(ended.exit, 3) << ended.err;
    EXPECT_EQ(reason(log_dir(), "PDLIST"), kNotAsked + std::string("the disk was nearly full"));
    EXPECT_TRUE(fs::exists(log_dir() / "report" / "index.html"));
}

TEST_F(Bounds, AToolDoesNotFillTheDisk) {
    const auto place = dir() / "small";
    fs::create_directory(place);
    if (::mount("none", place.c_str(), "tmpfs", 0, "size=64m") != 0)
        GTEST_SKIP() << "no file system can be mounted here: " << std::strerror(errno);
    events_do("cat /dev/zero");
    auto invocation = collecting({"--free-space", "32"});
    invocation.arguments[2] = place / "log";
    const auto ended = run(invocation);
    EXPECT_EQ(ended.exit, 3) << ended.err;
    EXPECT_EQ(first_outcome(place / "log"), kStopped + std::string("the disk was nearly full"));
    EXPECT_EQ(reason(place / "log", "PDLIST"), kNotAsked + std::string("the disk was nearly full"));
    ::umount2(place.c_str(), MNT_DETACH);
}

TEST_F(Bounds, SizesThatContradictEachOtherAreErrorsOfUsage) {
    const std::vector<std::vector<std::string>> cases{
        {"--capture-size", "2", "--table-size", "3"},
        {"--archive-size", "2", "--capture-size", "3"},
        {"--run-size", "2", "--archive-size", "3"},
        {"--run-size", "2", "--table-size", "3"},
        {"--capture-size", "0"},
        {"--tool-processes", "0"},
        {"--free-space", "1048577"},
    };
    for (auto arguments : cases) {
        const auto outer = arguments[0];
        arguments.insert(arguments.begin(), {"collect", "--log-dir", log_dir()});
        const auto ended = run(arguments);
        EXPECT_EQ(ended.exit, 2) << outer;
        EXPECT_NE(ended.err.find(outer), std::string::npos) << ended.err;
    }
}

}  // namespace

}  // namespace test
