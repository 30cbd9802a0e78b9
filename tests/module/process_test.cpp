// Running tools: what they inherit, how long they may take, and where directories with odd names lead.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "bench.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/collectors.h"
#include "rbmcinfo/tools.h"
#include "rsamplemodule1/captures.h"

using namespace marlox::repository;

namespace {

class Process : public Bench {
protected:
    // Whether a process that holds this marker in its arguments is alive.
    static bool is_running(const std::string& marker) {
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "cmdline", std::ios::binary);
            const std::string arguments{std::istreambuf_iterator<char>(file), {}};
            if (arguments.find(marker) != std::string::npos) return true;
        }
        return false;
    }
    static bool stops_running(const std::string& marker) {
        for (int i = 0; i < 200; ++i) {
            if (!is_running(marker)) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
};

TEST_F(Process, ATimeLimitKillsTheWholeGroup) {
    const auto marker = "987654" + std::to_string(::getpid());
    // A child of the tool ignores what can be ignored and keeps the capture open.
    tool("dmesg", "echo begun; (trap '' TERM INT HUP; exec sleep " + marker + ") & wait");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    const int status = dmesg();
    EXPECT_EQ(status, 9);
    EXPECT_EQ(log_file("dmesg.log"), "begun\n");
    EXPECT_TRUE(stops_running(marker));
    EXPECT_EQ(check_system_call(status, "SDR"), 1);
    EXPECT_EQ(noted({"log"}),
              "log 3 qvmodules/rbmcinfo: [repo] Signal terminal while getting SDR info,exit "
              "status:0\n");
}

TEST_F(Process, ATimeLimitEndsAPipeAsWell) {
    const auto marker = "987655" + std::to_string(::getpid());
    tool("uname", "printf 'x86'; (trap '' TERM; exec sleep " + marker + ") & wait");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 32);  // from what came in time
    EXPECT_TRUE(stops_running(marker));
}

TEST_F(Process, TheArchiveMayHaveALimitOfItsOwn) {
    tool("supportconfig", "sleep 1.3");
    tool("mv", "exit 3");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    setenv("QV_ARCHIVE_TIMEOUT", "60", 1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(sos(), 3 << 8);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1300));
}

TEST_F(Process, OddLimitsAreNone) {
    for (const char* limit : {"", "0", "-1", "x", "1x"}) {
        setenv("QV_TOOL_TIMEOUT", limit, 1);
        tool("dmesg", "exit 4");
        EXPECT_EQ(dmesg(), 4 << 8) << limit;
    }
}

TEST_F(Process, ACommandThatCannotBeStarted) {
    for (const int error : {EAGAIN, ENOMEM, EMFILE}) {
        fake_system.spawn_error = [error](std::string_view) { return error; };
        EXPECT_EQ(dmesg(), -1);
    }
    fake_system.spawn_error = [](std::string_view) { return ENOENT; };  // no shell
    EXPECT_EQ(dmesg(), 127 << 8);
}

TEST_F(Process, ToolsInheritThreeDescriptors) {
    const int plain = ::open("/dev/null", O_RDONLY);  // without O_CLOEXEC
    const int high = ::fcntl(plain, F_DUPFD, 200);
    // The listing's own descriptor is the fourth.
    tool("dmesg", "ls /proc/self/fd | wc -l");
    tool("uname", "ls /proc/self/fd | wc -l | sed 's/^4$/64/'");
    EXPECT_EQ(dmesg(), 0);
    EXPECT_EQ(log_file("dmesg.log"), "4\n");
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
    ::close(plain);
    ::close(high);
}

TEST_F(Process, SignalsAreTreatedAsBySystem) {
    struct sigaction before = {};
    ::sigaction(SIGINT, nullptr, &before);
    // proc(5): the signals that the host ignores and blocks while the tool runs, and the tool's own.
    tool("dmesg", "grep -E '^Sig(Blk|Ign)' /proc/" + std::to_string(::getpid()) +
                      "/status; grep -E '^Sig(Ign|Blk)' /proc/self/status");
    EXPECT_EQ(dmesg(), 0);
    unsigned long values[4] = {};
    ASSERT_EQ(std::sscanf(log_file("dmesg.log").c_str(),
                          "SigBlk: %lx\nSigIgn: %lx\nSigBlk: %lx\nSigIgn: %lx", &values[0],
                          &values[1], &values[2], &values[3]),
              4);
    const auto bit = [](int signal) { return 1ul << (signal - 1); };
    const auto interrupts = bit(SIGINT) | bit(SIGQUIT);
    EXPECT_EQ(values[0] & bit(SIGCHLD), bit(SIGCHLD));
    EXPECT_EQ(values[1] & interrupts, interrupts);
    EXPECT_EQ(values[2] & bit(SIGCHLD), 0u);
    EXPECT_EQ(values[3] & interrupts, 0u);

    struct sigaction after = {};
    ::sigaction(SIGINT, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
    sigset_t mask;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGCHLD), 0);
}

TEST_F(Process, DirectoriesWithAnyNameAreReached) {
    const char* names[] = {"plain",
                           "two  blanks",
                           "it's",
                           "''",
                           "$HOME",
                           "`id`",
                           "$(id)",
                           "a\nb",
                           "\"quoted\"",
                           "b\\s",
                           "n\xc3\xb6n-ascii",
                           "\xff\xfe",
                           "-dash",
                           "*?[x]",
                           "; exit 3"};
    for (const std::string name : names) {
        use_program_dir("p" + name);
        use_log_dir("l" + name);
        vendor_tool("storcli_x64", "printf '%s\\n' \"$0\"; echo 'Function Number = 0'");
        lsi_info(fakehost::repository());
        EXPECT_EQ(log_file("c0_showall.txt"),
                  program_dir + "qv_tools/storcli_x64\nFunction Number = 0\n")
            << name;
        EXPECT_EQ(
            noted({"add"}),
            "add RAIDINFO \"LSI Controller 0 Info\" -1: FunctionNumber \"Function Number\"=\" "
            "0\\n\"\n");
        // A name without a single quote stands in the command as it is.
        if (name.find('\'') == std::string::npos) {
            lsi_info(fakehost::repository());
            EXPECT_EQ(noted({"$"}), "$ 'P/qv_tools/storcli_x64' /c0 show > 'L/c0_showall.txt'\n");
        }
    }
}

}  // namespace
