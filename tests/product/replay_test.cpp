// The stand-ins of a replay do what the machine recorded, and nothing else is there.
#include <csignal>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct Answer {
    std::string output;
    int exit = 0;
    int signal = 0;
    bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
    *out << testing::PrintToString(answer.output) << ", exit " << answer.exit << ", signal "
         << answer.signal;
}

class Replay : public ProductTest {
protected:
    fs::path machine() const { return dir() / "machine's $HOME"; }
    fs::path temporary() const { return dir() / "temporary"; }

    void record(const json& commands) const {
        write_file(machine() / "machine.json",
                   json{{"description", ""}, {"uname", "x86_64"}, {"commands", commands}}.dump());
    }

    Invocation replay(const std::string& commands, const fs::path& log_dir) const {
        fs::create_directories(temporary());
        return Invocation{
            .arguments = {"replay", machine(), "--log-dir", log_dir, "--plugin", plugin("asks")},
            .environment = {{"QV_TEST_COMMANDS", commands}, {"TMPDIR", temporary().string()}}};
    }

    // What came of each command line.
    std::vector<Answer> ask(const std::vector<std::string>& commands, const fs::path& log_dir) {
        std::string lines;
        for (const auto& command : commands) lines += command + "\n";
        const auto outcome = run(replay(lines, log_dir));
        EXPECT_EQ(outcome.exit, 0) << outcome.err;
        EXPECT_TRUE(fs::is_empty(temporary())) << "it leaves nothing behind";
        const auto report = report_json(log_dir);
        std::vector<Answer> answers;
        for (const auto& found : report["records"]) {
            const auto& properties = found["properties"];
            answers.push_back(
                {properties[0]["value"], properties[1]["value"], properties[2]["value"]});
        }
        return answers;
    }
    std::vector<Answer> ask(const std::vector<std::string>& commands) {
        return ask(commands, log_dir());
    }
};

TEST_F(Replay, ArgumentsAreComparedExactly) {
    write_file(machine() / "one.txt", "one\n");
    write_file(machine() / "two's.txt", "two\n");
    record({
        {{"tool", "lspci"}, {"args", "-v a"}, {"stdout", "one.txt"}},
        {{"tool", "lspci"}, {"args", ""}, {"stdout", "two's.txt"}},
        {{"tool", "lspci"}, {"args", "*"}, {"stdout", "one.txt"}, {"exit", 4}},
        {{"tool", "ipmitool"}, {"stdout", "one.txt"}, {"exit", 3}},
    });
    const std::vector<Answer> expected{
        {"one\n", 0}, {"two\n", 0}, {"one\n", 4}, {"", 127}, {"", 127}, {"one\n", 3}, {"one\n", 3},
    };
    EXPECT_EQ(ask({"lspci -v a", "lspci", "lspci '*'", "lspci -v", "lspci -v a b", "ipmitool",
                   "ipmitool sdr elist"}),
              expected);
}

TEST_F(Replay, AnswersAreWhatWasRecorded) {
    const std::string bytes("no end \\n %s\0\xff'$x`y`", 20);
    write_file(machine() / "bytes", bytes);
    write_file(machine() / "complaint.txt", "from a file\n");
    record({
        {{"tool", "storcli"}, {"args", "bytes"}, {"stdout", "bytes"}},
        {{"tool", "storcli"}, {"args", "text"}, {"stderr", "it's %s \\n$HOME"}, {"exit", 1}},
        {{"tool", "storcli"}, {"args", "file"}, {"stderr", "complaint.txt"}},
        {{"tool", "storcli"}, {"args", "killed"}, {"stdout", "complaint.txt"}, {"signal", 9}},
        {{"tool", "storcli"}, {"args", "crash"}, {"signal", 11}},
        {{"tool", "storcli"}, {"args", "it's \"$x\""}, {"exit", 5}},
    });
    const auto answers =
        ask({"exec {TOOLS}/storcli_x64 bytes | od -An -c | wc -l", "{TOOLS}/storcli_x64 text 2>&1",
             "{TOOLS}/storcli_x32 file 2>&1", "exec {TOOLS}/storcli_x64 killed",
             "exec {TOOLS}/storcli_x64 crash", "{TOOLS}/storcli_x64 \"it's\" '\"$x\"'",
             "{TOOLS}/storcli_x64 bytes >{LOG}/copy"});
    const std::vector<Answer> expected{
        {"0\n", 0},  // od is not among the harmless tools
        {"it's %s \\n$HOME", 1},
        {"from a file\n", 0},
        {"from a file\n", -1, SIGKILL},
        {"", -1, SIGSEGV},
        {"", 5},
        {"", 0},
    };
    EXPECT_EQ(answers, expected);
    EXPECT_EQ(read_file(log_dir() / "copy"), bytes);
}

TEST_F(Replay, FilesAreLeftInTheCurrentDirectory) {
    write_file(machine() / "upload.bin", "uploaded");
    record({{{"tool", "sas2ircu"},
             {"files", {{"logir.log", "upload.bin"}, {"a/b c/d", "upload.bin"}}}}});
    EXPECT_EQ(ask({"{TOOLS}/sas2ircu 0 logir upload"}), std::vector<Answer>{{}});
    EXPECT_EQ(read_file(log_dir() / "logir.log"), "uploaded");
    EXPECT_EQ(read_file(log_dir() / "a/b c/d"), "uploaded");
}

TEST_F(Replay, TheLogDirectoryInArgumentsIsAnyDirectory) {
    for (const std::string name : {"it's", "a $(b) `c`", "two\nlines", "plain", "*"}) {
        SCOPED_TRACE(name);
        fs::remove_all(dir() / name);
        record({{{"tool", "cp"}, {"args", "-rf /var/x {LOG}"}, {"exit", 42}}});
        const auto answers = ask({"cp -rf /var/x {LOG}", "cp -rf /var/x /tmp"}, dir() / name);
        EXPECT_EQ(answers, (std::vector<Answer>{{"", 42}, {"", 127}}));
    }
}

TEST_F(Replay, WhatIsNotRecordedIsNotInstalled) {
    record(json::array());
    const std::vector<std::string> tools{
        "service", "modprobe", "sosreport",          "supportconfig", "mv",
        "cp",      "cat",      "dmidecode",          "dmesg",         "lspci",
        "lsmod",   "ipmitool", "{TOOLS}/storcli_x64"};
    std::vector<std::string> commands;
    for (const auto& tool : tools) commands.push_back(tool + " 2>/dev/null");
    EXPECT_EQ(ask(commands), std::vector<Answer>(tools.size(), Answer{"", 127}));
}

TEST_F(Replay, UnameIsTheMachines) {
    record(json::array());
    EXPECT_EQ(ask({"uname -i"}), (std::vector<Answer>{{"x86_64\n"}}));
}

TEST_F(Replay, TheReportTellsTheRecordedMachine) {
    const json identity = {{"host", "kp220"},
                           {"machine_id", "0123456789abcdef0123456789abcdef"},
                           {"os", "Some OS 15"},
                           {"kernel", "5.14.21-default"},
                           {"uptime_seconds", 3241}};
    for (const bool known : {true, false}) {
        json description = {{"commands", json::array()}};
        if (known) description.update(identity);
        write_file(machine() / "machine.json", description.dump());
        ASSERT_EQ(run(replay("", log_dir())).exit, 0);
        const auto collection = report_json(log_dir())["collection"];
        for (const auto& [key, value] : identity.items()) {
            EXPECT_EQ(json(collection[key]), known ? value : json()) << key;
            EXPECT_TRUE(collection.contains(key)) << key;
        }
        EXPECT_EQ(collection["status"], "complete");
        EXPECT_EQ(collection["version"], QV_VERSION);
        EXPECT_EQ(report_json(log_dir())["format"], 1);
    }
}

TEST_F(Replay, FiltersOfCommandLinesWork) {
    write_file(machine() / "modules.txt", "Module\nipmi_si 1\nipmi_devintf 2\nipmi_x:y 3\n");
    record({{{"tool", "lsmod"}, {"args", ""}, {"stdout", "modules.txt"}}});
    EXPECT_EQ(ask({"lsmod|grep ipmi|wc -l", "lsmod|grep ipmi_x|awk -F: '{print $2}'",
                   "chmod 544 {TOOLS}/* 2>/dev/null"}),
              (std::vector<Answer>{
                  {"3\n"}, {"y 3\n"}, {"", 1}  // there is no tool to change
              }));
}

TEST_F(Replay, EveryBuildOfAVendorsToolIsThere) {
    json commands = json::array();
    for (const char* tool : {"storcli", "arcconf", "SAS2IR_linux", "eventslog_convert", "ipmiutil",
                             "SCELNX", "sas2ircu"})
        commands.push_back({{"tool", tool}, {"exit", 1}});
    record(commands);
    std::vector<std::string> asked;
    for (const char* build :
         {"storcli_x32", "storcli_x64", "arcconf_x32", "arcconf_x64", "SAS2IR_linux_x32",
          "SAS2IR_linux_x64", "eventslog_convert_x32", "eventslog_convert_x64", "ipmiutil_x32_nh",
          "ipmiutil_x64_nh", "SCELNX_32", "SCELNX_64", "sas2ircu"})
        asked.push_back("{TOOLS}/" + std::string(build));
    EXPECT_EQ(ask(asked), std::vector<Answer>(asked.size(), Answer{"", 1}));
}

TEST_F(Replay, ATakenTimeIsTakenAndEndsWithTheRun) {
    record({{{"tool", "lspci"}, {"seconds", 1000}}});
    const pid_t pid = start(replay("lspci", log_dir()));
    wait_until("the stand-in sleeps", [&] {
        for (const pid_t one : family()) {
            if (read_file("/proc/" + std::to_string(one) + "/comm") == "sleep\n") return true;
        }
        return false;
    });
    ::kill(pid, SIGINT);
    EXPECT_EQ(finish(pid).exit, 3);
    EXPECT_EQ(family(), std::vector<pid_t>());
    EXPECT_TRUE(fs::is_empty(temporary())) << "the throw-away directory is gone";
}

TEST_F(Replay, AKilledReplayLeavesNothingBehind) {
    record({{{"tool", "lspci"}, {"seconds", 1000}}});
    const pid_t pid = start(replay("lspci", log_dir()));
    wait_until("the stand-in sleeps", [&] { return family().size() >= 4; });
    ::kill(pid, SIGKILL);
    finish(pid);
    wait_until("no process is left", [&] { return family().empty(); });
}

}  // namespace

}  // namespace test
