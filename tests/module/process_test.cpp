// Running tools: what they inherit, how long they may take, and where directories with odd names lead.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "bench.h"
#include "bmc_notes.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/collectors.h"
#include "rsamplemodule1/captures.h"
#include "runner/process.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class Process : public Bench {
protected:
    // Whether a process that holds this marker in its arguments is alive.
    static bool is_running(const std::string& marker) {
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "cmdline", std::ios::binary);
            // A process that ends while this is read gives an error.
            std::ostringstream arguments;
            arguments << file.rdbuf();
            if (arguments.str().find(marker) != std::string::npos) return true;
        }
        return false;
    }
    static bool starts_running(const std::string& marker) {
        for (int i = 0; i < 200; ++i) {
            if (is_running(marker)) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    static bool stops_running(const std::string& marker) {
        for (int i = 0; i < 6000; ++i) {  // a minute
            if (!is_running(marker)) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
};

// A host that adopts orphans and has the plug-in end what a command leaves; and one that does not.
class AdoptingHost {
public:
    AdoptingHost() {
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
        ::setenv("QV_END_PROCESSES", "1", 1);
    }
    ~AdoptingHost() {
        ::unsetenv("QV_END_PROCESSES");
        ::prctl(PR_SET_CHILD_SUBREAPER, 0);
    }
    AdoptingHost(const AdoptingHost&) = delete;
    AdoptingHost& operator=(const AdoptingHost&) = delete;
};

TEST_F(Process, WhatACommandLeavesEndsOnlyWhereTheHostSaysSo) {
    EXPECT_EQ(runner::run("setsid sleep 86411.5 & exit 0"), 0);
    EXPECT_TRUE(starts_running("86411.5")) << "in any other host it stays";
    runner::run("kill $(pgrep -f '[8]6411.5')");
    EXPECT_TRUE(stops_running("86411.5"));

    const AdoptingHost host;
    EXPECT_EQ(runner::run("setsid sleep 86412.5 & sleep 86412.5 & exit 7") >> 8, 7);
    EXPECT_FALSE(is_running("86412.5"));
    EXPECT_EQ(runner::output_of("setsid sleep 86413.5 & echo said"), "said\n");
    EXPECT_FALSE(is_running("86413.5"));
}

// "service NAME start" starts what is to stay, also when later commands end.
TEST_F(Process, AServiceStays) {
    const AdoptingHost host;
    const auto place =
        std::filesystem::temp_directory_path() / ("qv-service-" + std::to_string(::getpid()));
    std::filesystem::create_directory(place);
    std::ofstream(place / "service") << "#!/bin/sh\nsetsid sleep 86414.5 &\n";
    std::filesystem::permissions(place / "service", std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (place.string() + ":" + path).c_str(), 1);
    EXPECT_EQ(runner::run("service ipmi start 1>/dev/null 2>&1"), 0);
    ::setenv("PATH", path.c_str(), 1);
    std::filesystem::remove_all(place);
    EXPECT_TRUE(starts_running("86414.5"));
    EXPECT_EQ(runner::run("sleep 86415.5 & exit 0"), 0);
    EXPECT_FALSE(is_running("86415.5"));
    EXPECT_TRUE(is_running("86414.5"));
    runner::run("kill $(pgrep -f '[8]6414.5')");
    EXPECT_TRUE(stops_running("86414.5"));
    while (::waitpid(-1, nullptr, WNOHANG) > 0) continue;
}

// A signal's handler while the object lives.
class Handler {
public:
    Handler(int signal, void (*handler)(int)) : signal_(signal) {
        struct sigaction action = {};
        action.sa_handler = handler;  // without SA_RESTART
        ::sigaction(signal, &action, &before_);
    }
    ~Handler() { ::sigaction(signal_, &before_, nullptr); }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;

    static void (*of(int signal))(int) {
        struct sigaction action = {};
        ::sigaction(signal, nullptr, &action);
        return action.sa_handler;
    }

private:
    int signal_;
    struct sigaction before_ = {};
};

// Signals that are blocked while the object lives.
class Blocked {
public:
    explicit Blocked(std::initializer_list<int> signals) {
        sigset_t set;
        sigemptyset(&set);
        for (const int signal : signals) sigaddset(&set, signal);
        ::pthread_sigmask(SIG_BLOCK, &set, &before_);
    }
    ~Blocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    Blocked(const Blocked&) = delete;
    Blocked& operator=(const Blocked&) = delete;

    static bool is(int signal) {
        sigset_t mask;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        return sigismember(&mask, signal) == 1;
    }

private:
    sigset_t before_ = {};
};

void do_nothing(int) {}

constexpr unsigned long bit(int signal) { return 1ul << (signal - 1); }

constexpr unsigned long kInterrupts = bit(SIGINT) | bit(SIGQUIT);

TEST_F(Process, ATimeLimitKillsTheWholeGroup) {
    const auto marker = "987654" + std::to_string(::getpid());
    // A child of the tool ignores what can be ignored and keeps the capture open.
    tool("ipmitool", "echo begun; (trap '' TERM INT HUP; exec sleep " + marker + ") & wait");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(noted(), bmc_notes(R"(
4 start to run ipmitool sensor command
$ ipmitool sensor 1>'L/sensorinfo.txt' 2>&1
3 Signal terminal while getting sensor info,exit status:0
)"));
    EXPECT_EQ(log_file("sensorinfo.txt"), "begun\n");
    EXPECT_TRUE(stops_running(marker));
}

TEST_F(Process, ATimeLimitEndsAPipeAsWell) {
    const auto marker = "987655" + std::to_string(::getpid());
    tool("uname", "printf 'x86'; (trap '' TERM; exec sleep " + marker + ") & wait");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 32);  // from what came in time
    EXPECT_TRUE(stops_running(marker));
}

// A tool that closed its output and stays is killed, too.
TEST_F(Process, ATimeLimitHoldsBehindTheOutput) {
    const auto marker = "987656" + std::to_string(::getpid());
    tool("uname", "echo x86_64; exec >&- sleep " + marker);
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
    EXPECT_TRUE(stops_running(marker));
}

// What left the group cannot be killed with it; nobody waits for it.
TEST_F(Process, ADaemonWithThePipeIsLeftBehind) {
    const auto marker = "987657" + std::to_string(::getpid());
    tool("uname",
         "printf x86_64; setsid sleep " + marker + " & echo $! > '" + log_dir + "daemon'; exit 0");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
    EXPECT_TRUE(is_running(marker));
    const auto daemon = log_file("daemon");
    ASSERT_NE(daemon, "(none)");
    ::kill(std::stoi(daemon), SIGKILL);
    EXPECT_TRUE(stops_running(marker));
}

// popen() and fgets() take the line and pclose() waits for the shell, not for the end of the pipe.
TEST_F(Process, WithoutALimitADaemonIsLeftBehindAsWell) {
    const auto marker = "30.987658" + std::to_string(::getpid());  // seconds
    tool("uname", "echo x86_64; sleep " + marker + " & echo $! > '" + log_dir + "daemon'; exit 0");
    linux_x32_x64 = 32;
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
    EXPECT_TRUE(starts_running(marker)) << "it was waited for";
    const auto daemon = log_file("daemon");
    ASSERT_NE(daemon, "(none)");
    ::kill(std::stoi(daemon), SIGKILL);
    EXPECT_TRUE(stops_running(marker));
}

// Behind the line the pipe is closed: who goes on writing is ended by SIGPIPE.
TEST_F(Process, BehindTheLineNothingIsRead) {
    tool("uname",
         "echo x86_64; for i in 1 2 3 4 5 6 7 8 9; do /bin/sleep 0.1; echo $i || exit 0; "
         "echo $i >> '" +
             log_dir + "written'; done");
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
    EXPECT_EQ(log_file("written"), "(none)");
}

TEST_F(Process, WhatEndsInTimeKeepsItsStatus) {
    setenv("QV_TOOL_TIMEOUT", "60", 1);
    tool("dmesg", "echo kernel; exit 4");
    EXPECT_EQ(dmesg(), 4 << 8);
    EXPECT_EQ(log_file("dmesg.log"), "kernel\n");
    tool("dmesg", dies_by(SIGTERM));
    EXPECT_EQ(dmesg(), SIGTERM);
    tool("uname", "echo x86_64");
    linux_x32_x64 = 32;
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
}

TEST_F(Process, TheArchiveMayHaveALimitOfItsOwn) {
    tool("supportconfig", "sleep 1.3; echo done > '" + log_dir + "archive'");
    tool("mv", "exit 3");
    setenv("QV_TOOL_TIMEOUT", "1", 1);
    setenv("QV_ARCHIVE_TIMEOUT", "60", 1);
    EXPECT_EQ(sos(), 3 << 8);
    EXPECT_EQ(log_file("archive"), "done\n");
    // Without it, the limit of all tools holds.
    unsetenv("QV_ARCHIVE_TIMEOUT");
    std::filesystem::remove(log_dir + "archive");
    EXPECT_EQ(sos(), 3 << 8);
    EXPECT_EQ(log_file("archive"), "(none)");
}

TEST_F(Process, OddLimitsAreNone) {
    tool("dmesg", "sleep 0.1; exit 4");
    for (const char* limit : {"", "0", "-1", "x", "1x", " 1", "99999999999999999999"}) {
        setenv("QV_TOOL_TIMEOUT", limit, 1);
        EXPECT_EQ(dmesg(), 4 << 8) << limit;
    }
}

TEST_F(Process, ACommandThatCannotBeStarted) {
    for (const int error : {EAGAIN, ENOMEM, EMFILE, ENFILE}) {
        fake_system.spawn_error = [error](std::string_view) { return error; };
        EXPECT_EQ(dmesg(), -1);
        EXPECT_EQ(check_linux_bit(), 1);
    }
    fake_system.spawn_error = {};
    fake_system.program_instead = root / "none";
    EXPECT_EQ(dmesg(), 127 << 8);
    EXPECT_EQ(check_linux_bit(), 1);
    EXPECT_FALSE(Blocked::is(SIGCHLD));
    EXPECT_EQ(Handler::of(SIGINT), SIG_DFL);
}

TEST_F(Process, ToolsInheritThreeDescriptors) {
    const int plain = ::open("/dev/null", O_RDONLY);  // without O_CLOEXEC
    const int high = ::fcntl(plain, F_DUPFD, 200);
    // The listing's own descriptor is the fourth.
    tool("dmesg", "ls /proc/self/fd | wc -l");
    tool("uname", "ls /proc/self/fd | wc -l | sed 's/^4$/64/'");
    for (const char* limit : {"", "60"}) {
        setenv("QV_TOOL_TIMEOUT", limit, 1);
        EXPECT_EQ(dmesg(), 0);
        EXPECT_EQ(log_file("dmesg.log"), "4\n");
        linux_x32_x64 = 32;
        EXPECT_EQ(check_linux_bit(), 0);
        EXPECT_EQ(linux_x32_x64, 64);
    }
    ::close(plain);
    ::close(high);
}

TEST_F(Process, NoDescriptorStaysOpen) {
    const auto open_files = [] {
        const std::filesystem::directory_iterator fds("/proc/self/fd");
        return std::distance(begin(fds), end(fds));
    };
    const auto before = open_files();
    tool("dmesg", "echo kernel");
    tool("uname", "echo x86_64");
    for (const char* limit : {"", "60"}) {
        setenv("QV_TOOL_TIMEOUT", limit, 1);
        dmesg();
        check_linux_bit();
    }
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    dmesg();
    check_linux_bit();
    EXPECT_EQ(open_files(), before);
}

// Closed standard streams of the host get the pipe's numbers.
TEST_F(Process, APipeWorksWithoutStandardStreams) {
    tool("uname", "echo x86_64");
    linux_x32_x64 = 32;
    const int saved[] = {::fcntl(0, F_DUPFD_CLOEXEC, 10), ::fcntl(1, F_DUPFD_CLOEXEC, 10)};
    ::close(0);
    ::close(1);
    const int result = check_linux_bit();
    ::dup2(saved[0], 0);
    ::dup2(saved[1], 1);
    ::close(saved[0]);
    ::close(saved[1]);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(linux_x32_x64, 64);
}

TEST_F(Process, SignalsAreTreatedAsBySystem) {
    struct Case {
        const char* host;
        void (*handler)(int);
        std::initializer_list<int> blocked;
        unsigned long ignored_by_tool;
        unsigned long blocked_by_tool;
    };
    const Case cases[] = {
        {"plain", SIG_DFL, {}, 0, 0},
        {"has a handler", do_nothing, {}, 0, 0},
        {"ignores them", SIG_IGN, {}, kInterrupts, 0},
        {"blocks some", SIG_DFL, {SIGCHLD, SIGUSR1}, 0, bit(SIGCHLD) | bit(SIGUSR1)},
    };
    // proc(5): what the host blocks and ignores while the tool runs, and what the shell gets. (The
    // shells have a mask of their own for their children.)
    fake_system.program_instead = root / "shell";
    std::ofstream(fake_system.program_instead)
        << "#!/usr/bin/perl\n@ARGV = ('/proc/" << ::getpid() << "/status', '/proc/self/status');\n"
        << "open STDOUT, '>', '" << log_dir
        << "signals';\n"
        // While it starts a process the host blocks everything; then it sleeps.
        << "for (1 .. 6000) {\n  open my $host, '<', $ARGV[0];\n"
        << "  last if grep /^State:\\s+S/, <$host>;\n  select undef, undef, undef, 0.01;\n}\n"
        << "print grep /^Sig(Blk|Ign)/, <>;\n";
    std::filesystem::permissions(fake_system.program_instead, std::filesystem::perms::owner_all);
    for (const auto& c : cases) {
        const Handler interrupt(SIGINT, c.handler);
        const Handler quit(SIGQUIT, c.handler);
        const Blocked blocked(c.blocked);
        const bool child = Blocked::is(SIGCHLD);

        EXPECT_EQ(dmesg(), 0);
        unsigned long host_blocks = 0;
        unsigned long host_ignores = 0;
        unsigned long tool_blocks = 0;
        unsigned long tool_ignores = 0;
        ASSERT_EQ(std::sscanf(log_file("signals").c_str(),
                              "SigBlk: %lx\nSigIgn: %lx\nSigBlk: %lx\nSigIgn: %lx", &host_blocks,
                              &host_ignores, &tool_blocks, &tool_ignores),
                  4);
        EXPECT_EQ(host_blocks, c.blocked_by_tool | bit(SIGCHLD)) << c.host;
        EXPECT_EQ(host_ignores & kInterrupts, kInterrupts) << c.host;
        EXPECT_EQ(tool_blocks, c.blocked_by_tool) << c.host;
        EXPECT_EQ(tool_ignores & kInterrupts, c.ignored_by_tool) << c.host;

        EXPECT_EQ(Handler::of(SIGINT), c.handler) << c.host;
        EXPECT_EQ(Handler::of(SIGQUIT), c.handler) << c.host;
        EXPECT_EQ(Blocked::is(SIGCHLD), child) << c.host;
    }
}

// A host that never waits has its children reaped by the kernel: the status is lost, as in system().
TEST_F(Process, AHostThatIgnoresItsChildrenGetsNoStatus) {
    const Handler child(SIGCHLD, SIG_IGN);
    tool("dmesg", "echo kernel; exit 4");
    for (const char* limit : {"", "60"}) {
        setenv("QV_TOOL_TIMEOUT", limit, 1);
        EXPECT_EQ(dmesg(), -1);
        EXPECT_EQ(log_file("dmesg.log"), "kernel\n");
    }
}

TEST_F(Process, SignalsOfTheHostDoNotCutAWait) {
    const Handler alarm(SIGALRM, do_nothing);
    itimerval timer = {{0, 5000}, {0, 5000}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    tool("dmesg", "sleep 0.1; exit 4");
    tool("uname", "sleep 0.1; echo x86_64");
    for (const char* limit : {"", "60"}) {
        setenv("QV_TOOL_TIMEOUT", limit, 1);
        EXPECT_EQ(dmesg(), 4 << 8);
        linux_x32_x64 = 32;
        EXPECT_EQ(check_linux_bit(), 0);
        EXPECT_EQ(linux_x32_x64, 64);
    }
    timer = {};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

TEST_F(Process, DirectoriesWithAnyNameAreReached) {
    const char* names[] = {"plain",
                           "'",
                           "it's 2's",
                           "two\ttabs",
                           "#",
                           "~",
                           "%s{P}{L}{x}",
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

// The other forms: both streams to one file, no quotes around the whole, the wildcard behind them.
TEST_F(Process, TheBmcModuleReachesThemAsWell) {
    for (const std::string name : {"plain", "it's", "a\nb", "$(id) `id` \"*\"", "\xff\xfe"}) {
        use_program_dir("p" + name);
        use_log_dir("l" + name);
        tool("dmidecode", "echo 'Product Name: KP120'");
        tool("uname", "echo x86_64");
        tool("lsmod", "echo ipmi_devintf");
        for (const char* quiet : {"dmesg", "cat", "service", "modprobe", "supportconfig"})
            tool(quiet, "exit 0");
        tool("mv", "eval echo archive '>\"${2}archive\"'");
        tool("ipmitool", "echo one; exit 0");
        vendor_tool("ipmiutil_x64_nh", "printf '%s\\n' \"$0\"");
        std::filesystem::permissions(program_dir + "qv_tools/ipmiutil_x64_nh",
                                     std::filesystem::perms::owner_read);
        forget_modules();
        enumerate("BMC_Info", "MCINFO");

        EXPECT_EQ(std::filesystem::status(program_dir + "qv_tools/ipmiutil_x64_nh").permissions(),
                  std::filesystem::perms{0544})
            << name;
        const auto utility = program_dir + "qv_tools/ipmiutil_x64_nh\n";
        for (const char* file :
             {"mcinfo.txt", "verinfo.txt", "psuinfo.txt", "laninfo.txt", "ledinfo.txt",
              "selinfo.txt", "SEL_Hex.txt", "sensor_with_id_string.txt"})
            EXPECT_EQ(log_file(file), utility) << name << " " << file;
        for (const char* file : {"selfinfo.txt", "sensorinfo.txt", "sdrinfo.txt", "fruinfo.txt"})
            EXPECT_EQ(log_file(file), "one\n") << name << " " << file;
        EXPECT_EQ(log_file("dmidecode.log"), "Product Name: KP120\n") << name;
        EXPECT_EQ(log_file("archive"), "archive\n") << name;
    }
}

// A command line has no limit, only each of the directories has.
TEST_F(Process, DirectoriesMayHave255Bytes) {
    const auto filled = [&](std::size_t size) {
        return std::string(size - root.string().size() - 2, 'd');
    };
    use_program_dir("p/" + filled(253 - 2));
    use_log_dir("l/" + filled(255 - 2));
    fake_system.exe_link = program_dir + "ab";
    ASSERT_EQ(fake_system.exe_link.size(), 255u);
    ASSERT_EQ(log_dir.size(), 255u);
    char buffer[256] = {};
    EXPECT_EQ(GetProgramDir(buffer), 0);
    EXPECT_EQ(buffer, program_dir);
    vendor_tool("ipmiutil_x64_nh", "echo a:1");
    EXPECT_EQ(bmc_info(fakehost::repository(), 1), 0);
    EXPECT_EQ(noted({"$", "add"}),
              "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1\n"
              "add MCINFO \"MC Information\" -1: MC1 \"a\"=\"1\"\n");
}

}  // namespace
