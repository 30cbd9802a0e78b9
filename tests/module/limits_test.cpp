// When a command is stopped, and what the command log tells of it. The sensor list stands for tools that
// write a capture, the word size for those that are read from a pipe.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/collectors.h"
#include "rsamplemodule2/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class Limits : public Bench {
protected:
    void SetUp() override { ::setenv("QV_COMMAND_LOG", log().c_str(), 1); }
    void TearDown() override {
        for (const char* variable :
             {"QV_COMMAND_LOG", "QV_TOOL_TIMEOUT", "QV_TOOL_LIMITS", "QV_SILENCE_TIMEOUT",
              "QV_DEADLINE", "QV_DEVICE_TOOLS", "QV_DEVICE_QUESTION", "QV_DEVICE_LEFT"})
            ::unsetenv(variable);
    }

    std::string log() const { return log_dir + "commands"; }

    // How commands ended, as the log has it, without their times.
    std::string ends() const {
        std::string text;
        std::ifstream file(log());
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("< ")) text += line.substr(line.find(' ', 2) + 1) + "\n";
            if (line.starts_with("- ")) text += line + "\n";
        }
        return text;
    }

    std::string lines_that_begin_with(const std::string& words) const {
        std::string text;
        std::ifstream file(log());
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(words)) text += line + "\n";
        }
        return text;
    }

    static void deadline_in(int seconds) {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        ::setenv("QV_DEADLINE", std::to_string(now.tv_sec + seconds).c_str(), 1);
    }
};

TEST_F(Limits, ASilentCommandIsStopped) {
    tool("ipmitool", "echo begun; sleep 60");
    ::setenv("QV_SILENCE_TIMEOUT", "1", 1);
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(log_file("sensorinfo.txt"), "begun\n");
    EXPECT_EQ(ends(), "9 silence\n");
}

TEST_F(Limits, OneThatWritesIsNot) {
    tool("ipmitool", "for i in 1 2 3 4 5 6 7 8; do echo $i; sleep 0.5; done");
    ::setenv("QV_SILENCE_TIMEOUT", "3", 1);
    sensor_info(fakehost::repository());
    EXPECT_EQ(log_file("sensorinfo.txt"), "1\n2\n3\n4\n5\n6\n7\n8\n");
    EXPECT_EQ(ends(), "0\n");
}

TEST_F(Limits, OneThatWritesElsewhereIsNot) {
    tool("ipmitool", "for i in 1 2 3 4 5 6 7 8; do echo $i >'" + log_dir + "own'; sleep 0.5; done");
    ::setenv("QV_SILENCE_TIMEOUT", "3", 1);
    sensor_info(fakehost::repository());
    EXPECT_EQ(log_file("own"), "8\n");
    EXPECT_EQ(ends(), "0\n");
}

// It starts nothing and keeps its answer in memory until the end. /proc/uptime begins with seconds: "4711.08".
TEST_F(Limits, OneThatWorksWithoutAWordIsNot) {
    tool("ipmitool",
         "now() { read -r up rest </proc/uptime; up=${up%.*}; }\n"
         "now; end=$((up + 5)); while [ $up -lt $end ]; do now; done; echo done");
    ::setenv("QV_SILENCE_TIMEOUT", "2", 1);
    sensor_info(fakehost::repository());
    EXPECT_EQ(log_file("sensorinfo.txt"), "done\n");
    EXPECT_EQ(ends(), "0\n");
}

TEST_F(Limits, APipeIsSilentToo) {
    tool("uname", "printf x86_64; sleep 60");
    ::setenv("QV_SILENCE_TIMEOUT", "1", 1);
    check_linux_bit();
    EXPECT_EQ(linux_x32_x64, 64);  // from what came before
    EXPECT_EQ(ends(), "9 silence\n");
}

TEST_F(Limits, NothingBeginsBehindTheDeadline) {
    tool("ipmitool", "echo x > '" + log_dir + "made'");
    tool("uname", "echo x > '" + log_dir + "made'");
    deadline_in(-1);
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    check_linux_bit();
    EXPECT_EQ(log_file("made"), "(none)");
    EXPECT_EQ(ends(), "- deadline ipmitool sensor 1>'" + log_dir +
                          "sensorinfo.txt' 2>&1\n- deadline uname -i\n");
}

TEST_F(Limits, NothingRunsBehindTheDeadline) {
    tool("ipmitool", "while :; do echo x; sleep 0.1; done");
    deadline_in(2);
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(ends(), "9 deadline\n");
}

TEST_F(Limits, TheNearestLimitHolds) {
    tool("ipmitool", "sleep 60");
    ::setenv("QV_TOOL_TIMEOUT", "1", 1);
    ::setenv("QV_SILENCE_TIMEOUT", "60", 1);
    deadline_in(60);
    sensor_info(fakehost::repository());
    EXPECT_EQ(ends(), "9 time\n");
}

TEST_F(Limits, TheLogHasTheCommandAndItsEnd) {
    use_log_dir("two\nlines\\");
    ::setenv("QV_COMMAND_LOG", (root / "commands").c_str(), 1);
    tool("ipmitool", "exit 3");
    sensor_info(fakehost::repository());
    std::vector<std::string> lines;
    std::ifstream file(root / "commands");
    for (std::string line; std::getline(file, line);) {
        // Other programs may write into the directory where the tests run.
        if (!line.starts_with("+ ")) lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 2u);
    const std::string command =
        " ipmitool sensor 1>'" + root.string() + "/two\\nlines\\\\/sensorinfo.txt' 2>&1";
    EXPECT_TRUE(lines[0].starts_with("> 2")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with("Z" + command)) << lines[0];
    EXPECT_EQ(lines[0].size(), std::string("> 2026-11-21T01:20:40.123Z").size() + command.size());
    double seconds = -1;
    int status = -1;
    int length = -1;
    const auto& end = lines[1];
    std::sscanf(end.c_str(), "< %lf %d%n", &seconds, &status, &length);
    EXPECT_GE(seconds, 0) << end;
    EXPECT_EQ(status, 3 << 8) << end;
    EXPECT_EQ(length, static_cast<int>(end.size())) << end;
}

// The word size is read from a pipe; its standard error goes where the host's does.
TEST_F(Limits, TheLogKeepsHowStandardErrorBegins) {
    tool("uname", "echo first >&2; echo x86_64; head -c 5000 /dev/zero | tr '\\000' x >&2");
    testing::internal::CaptureStderr();
    check_linux_bit();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "first\n" + std::string(5000, 'x'));
    EXPECT_EQ(lines_that_begin_with("2 "), "2 first\\n" + std::string(4096 - 6, 'x') + "\n");
}

TEST_F(Limits, WithoutALogStandardErrorIsTheHosts) {
    ::unsetenv("QV_COMMAND_LOG");
    tool("uname", "readlink /proc/$$/fd/2 >'" + log_dir + "where'; echo x86_64");
    check_linux_bit();
    const auto host = std::filesystem::read_symlink("/proc/self/fd/2").string();
    EXPECT_EQ(log_file("where"), host + "\n");
    EXPECT_FALSE(std::filesystem::exists(log()));
}

TEST_F(Limits, NobodyWaitsForAProcessThatHoldsStandardError) {
    tool("dmesg", "(sleep 60; echo late >&2) >/dev/null & echo said >&2");
    dmesg();
    EXPECT_EQ(lines_that_begin_with("2 "), "2 said\\n\n");  // whoever waits gets "late" as well
}

// What lies there was written by the command before.
TEST_F(Limits, ACommandThatIsNotStartedHasNoCapture) {
    tool("ipmitool", "echo from before");
    EXPECT_EQ(sdr_info(fakehost::repository()), 0);
    EXPECT_NE(noted({"add"}), "");
    ::setenv("QV_DEADLINE", "1", 1);  // since the system started
    tool("lspci", "echo 1");
    sas2308_log(fakehost::repository());
    event_log(fakehost::repository());
    std::ofstream(log_dir + "pdlist.txt") << "Needs EKM Attention = No\n";
    pd_list(fakehost::repository());
    EXPECT_EQ(noted({"add"}), "");
    EXPECT_EQ(log_file("pdlist.txt"), "Needs EKM Attention = No\n");
    ::unsetenv("QV_DEADLINE");
    vendor_tool("storcli_x64", "echo 'Needs EKM Attention = No'");
    pd_list(fakehost::repository());
    EXPECT_NE(noted({"add"}), "");
}

TEST_F(Limits, ALogThatCannotBeWrittenIsNoReasonToCollectLess) {
    tool("ipmitool", "echo x");
    ::setenv("QV_COMMAND_LOG", "/nowhere/at/all", 1);
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(log_file("sensorinfo.txt"), "x\n");
}

// The sensor list stands for what is asked; the question is asked after two stops in a row.
class Device : public Limits {
protected:
    void SetUp() override {
        Limits::SetUp();
        ::setenv("QV_DEVICE_TOOLS", "ipmitool", 1);
        ::setenv("QV_DEVICE_QUESTION", "question now", 1);
        ::setenv("QV_TOOL_LIMITS", "ipmitool=1", 1);
        tool("ipmitool", "exit 0");
        ask();  // what went before in this process is over
        std::filesystem::remove(log());
    }
    static void ask() { sensor_info(fakehost::repository()); }
    void device_hangs() { tool("ipmitool", "sleep 60"); }

    // The commands of the log, each with its end: "ipmitool: 9 time".
    std::string asked() const {
        std::string text;
        std::string name;
        std::ifstream file(log());
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("> ")) name = "ipmitool";
            if (line.starts_with("? ")) name = line.substr(line.find(' ', 2) + 1);
            if (line.starts_with("< "))
                text += name + ": " + line.substr(line.find(' ', 2) + 1) + "\n";
            if (line.starts_with("- ")) text += line.substr(0, line.find(' ', 2)) + "\n";
        }
        return text;
    }
};

TEST_F(Device, IsLeftWhenTheQuestionIsNotAnsweredEither) {
    device_hangs();
    tool("question", "sleep 60");
    ::setenv("QV_TOOL_LIMITS", "ipmitool=1,question=1", 1);
    for (int i = 0; i < 4; ++i) ask();
    EXPECT_EQ(asked(),
              "ipmitool: 9 time\nipmitool: 9 time\nquestion now >/dev/null 2>&1: 9 time\n"
              "- unanswered\n- unanswered\n");
    std::filesystem::remove(log());
    tool("dmesg", "exit 0");
    dmesg();
    EXPECT_EQ(ends(), "0\n") << "what does not ask it is run";
}

TEST_F(Device, IsLeftThoughAToolThatIsNotThereWasAskedBetween) {
    device_hangs();
    tool("question", "sleep 60");
    ::setenv("QV_TOOL_LIMITS", "ipmitool=1,question=1", 1);
    ask();
    tool("ipmitool", "exit 127");
    ask();
    device_hangs();
    ask();
    EXPECT_EQ(asked(),
              "ipmitool: 9 time\nipmitool: 32512\nipmitool: 9 time\n"
              "question now >/dev/null 2>&1: 9 time\n");
}

TEST_F(Device, IsLeftWhenTheQuestionCannotBeAsked) {
    device_hangs();
    for (int i = 0; i < 3; ++i) ask();
    EXPECT_EQ(asked(),
              "ipmitool: 9 time\nipmitool: 9 time\nquestion now >/dev/null 2>&1: 32512\n"
              "- unanswered\n");
}

TEST_F(Device, IsAskedOnWhenItAnswersWithAnError) {
    device_hangs();
    tool("question", "exit 1");
    for (int i = 0; i < 4; ++i) ask();
    const std::string twice =
        "ipmitool: 9 time\nipmitool: 9 time\nquestion now >/dev/null 2>&1: 256\n";
    EXPECT_EQ(asked(), twice + twice);
}

TEST_F(Device, AnAnswerBetweenTwoStopsCounts) {
    tool("question", "exit 0");
    device_hangs();
    ask();
    ::unsetenv("QV_TOOL_LIMITS");
    tool("ipmitool", "exit 1");
    ask();
    ::setenv("QV_TOOL_LIMITS", "ipmitool=1", 1);
    device_hangs();
    ask();
    EXPECT_EQ(asked(), "ipmitool: 9 time\nipmitool: 256\nipmitool: 9 time\n");
}

}  // namespace
