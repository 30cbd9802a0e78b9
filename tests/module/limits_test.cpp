// When a command is stopped, and what the command log tells of it. The sensor list stands for tools that
// write a capture, the word size for those that are read from a pipe.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>

#include "bench.h"
#include "rbmcinfo/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class Limits : public Bench {
protected:
    void SetUp() override { ::setenv("QV_COMMAND_LOG", log().c_str(), 1); }
    void TearDown() override {
        for (const char* variable :
             {"QV_COMMAND_LOG", "QV_TOOL_TIMEOUT", "QV_SILENCE_TIMEOUT", "QV_DEADLINE"})
            ::unsetenv(variable);
    }

    std::string log() const { return log_dir + "commands"; }

    // How commands ended, as the log has it, without their times.
    std::string ends() const {
        std::string text;
        std::ifstream file(log());
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("< ")) text += line.substr(line.find(' ', 2) + 1) + "\n";
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
    EXPECT_EQ(ends(), "9 deadline\n9 deadline\n");
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
    std::ifstream file(root / "commands");
    std::string begin;
    std::string end;
    std::getline(file, begin);
    std::getline(file, end);
    EXPECT_EQ(begin,
              "> ipmitool sensor 1>'" + root.string() + "/two\\nlines\\\\/sensorinfo.txt' 2>&1");
    double seconds = -1;
    int status = -1;
    int length = -1;
    std::sscanf(end.c_str(), "< %lf %d%n", &seconds, &status, &length);
    EXPECT_GE(seconds, 0) << end;
    EXPECT_EQ(status, 3 << 8) << end;
    EXPECT_EQ(length, static_cast<int>(end.size())) << end;
    EXPECT_FALSE(std::getline(file, end));
}

TEST_F(Limits, ALogThatCannotBeWrittenIsNoReasonToCollectLess) {
    tool("ipmitool", "echo x");
    ::setenv("QV_COMMAND_LOG", "/nowhere/at/all", 1);
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(log_file("sensorinfo.txt"), "x\n");
}

}  // namespace
