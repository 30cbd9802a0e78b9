// The host's own questions, asked by the built program: after the plug-in's, or alone.
#include <algorithm>

#include "expressions.h"
#include "program.h"
#include "report.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using qvhost::Store;
using Texts = std::vector<std::string>;

class OwnQuestions : public ProductTest {
protected:
    // A recorded server of these commands.
    fs::path machine(const std::string& commands) {
        write_file(dir() / "machine" / "lspci.txt",
                   "00:17.0 SATA controller: Example\n00:00.0 Host bridge: Example\n");
        write_file(dir() / "machine" / "mdstat.txt",
                   "Personalities : [raid1] \nmd0 : active raid1 sda1[0] sdb1[1](F)\n"
                   "      1046528 blocks super 1.2 [2/1] [U_]\n      \nunused devices: <none>\n");
        write_file(dir() / "machine" / "machine.json",
                   R"({"description": "", "uname": "x86_64", "commands": [)" + commands + "]}");
        return dir() / "machine";
    }

    Outcome replay(const fs::path& machine, const Texts& options = {}) {
        std::vector<std::string> arguments{"replay", machine, "--log-dir", log_dir(), "--quiet"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    }

    // A stand-in on the search path of check(), for this script.
    void has_tool(const std::string& name, const std::string& script) {
        const auto file = dir() / "path" / name;
        write_file(file, "#!/bin/sh\n" + script + "\n");
        fs::permissions(file, fs::perms::owner_all);
    }

    // `check` of this machine, with tools of which none but the stand-ins answers.
    Outcome check(const Texts& options) {
        for (const char* name :
             {"ipmitool", "smartctl", "mdadm", "zpool", "multipath", "storcli", "arcconf",
              "sas2ircu", "sas3ircu", "ssacli", "lspci", "dmidecode", "dmesg", "cat"}) {
            if (!fs::exists(dir() / "path" / name)) has_tool(name, "exit 1");
        }
        fs::create_directories(dir() / "tmp");
        Invocation invocation{.arguments = {"check"},
                              .environment = {{"PATH", (dir() / "path").string()},
                                              {"TMPDIR", (dir() / "tmp").string()}}};
        invocation.arguments.insert(invocation.arguments.end(), options.begin(), options.end());
        return run(invocation);
    }

    // Without the log directory and the directory of the stand-ins.
    Texts commands(const fs::path& log_dir) const {
        Texts texts;
        for (const auto& command : Store(store_in(log_dir), Store::Mode::read).commands()) {
            auto text = replaced(command.text, "/[^ ']*/bin/qv_tools/", "");
            const auto log = log_dir.string() + "/";
            for (auto at = text.find(log); at != std::string::npos; at = text.find(log))
                text.erase(at, log.size());
            texts.push_back(replaced(text, "'/[^ ']*/bin/qv_tools'", "'qv_tools'"));
        }
        return texts;
    }
    Texts commands() const { return commands(log_dir()); }
};

const char* const kRecorded =
    R"({"tool": "lspci", "args": "", "stdout": "lspci.txt"},
       {"tool": "cat", "args": "/proc/mdstat", "stdout": "mdstat.txt"},
       {"tool": "mdadm", "args": "--detail /dev/md0", "exit": 1},
       {"tool": "smartctl", "args": "--scan -j", "exit": 1})";

TEST_F(OwnQuestions, FollowThePlugInsAndTheseStayWhatTheyAre) {
    const auto server = machine(kRecorded);
    ASSERT_EQ(replay(server, {"--plug-in-only"}).exit, 0);
    const auto of_plug_in = commands();
    ASSERT_FALSE(of_plug_in.empty());
    for (const auto& text : of_plug_in) EXPECT_EQ(text.find("host_"), std::string::npos) << text;
    EXPECT_FALSE(fs::exists(log_dir() / "host_lspci.txt"));

    ASSERT_EQ(replay(server).exit, 0);
    auto expected = of_plug_in;
    expected.insert(expected.end(),
                    {"lspci >'host_lspci.txt'", "cat /proc/mdstat >'host_mdstat.txt'",
                     "mdadm --detail /dev/md0 >'host_mdadm_md0.txt'",
                     "smartctl --scan -j >'host_smartctl_scan.json'"});
    EXPECT_EQ(commands(), expected);

    // One module alone is what was asked for.
    ASSERT_EQ(replay(server, {"--module", "AMT_Info"}).exit, 0);
    for (const auto& text : commands()) EXPECT_EQ(text.find("host_"), std::string::npos) << text;
    EXPECT_FALSE(fs::exists(log_dir() / "host_lspci.txt"))
        << "an earlier answer is none of today's";
}

TEST_F(OwnQuestions, WhatWasNotRecordedIsNotAsked) {
    ASSERT_EQ(replay(machine("")).exit, 0);
    for (const auto& text : commands()) EXPECT_EQ(text.find("host_"), std::string::npos) << text;
    EXPECT_EQ(report_json(log_dir()).dump().find("is not installed (Debian"), std::string::npos);
}

TEST_F(OwnQuestions, TellOfADegradedMirrorOfTheSystem) {
    ASSERT_EQ(replay(machine(kRecorded)).exit, 0);
    const auto report = report_json(log_dir());
    bool is_told = false;
    for (const auto& finding : report["findings"])
        is_told = is_told || finding["evidence"][0]["capture"] == "host_mdstat.txt";
    EXPECT_TRUE(is_told) << report["findings"].dump(1);
}

// All modules have come to their end: it is complete. What the question would have said is not known.
TEST_F(OwnQuestions, OneThatHangsLeavesTheCollectionComplete) {
    const auto server = machine(R"({"tool": "cat", "args": "/proc/mdstat", "stdout": "mdstat.txt"},
                                   {"tool": "mdadm", "args": "--detail /dev/md0", "seconds": 60},
                                   {"tool": "lsblk"})");
    ASSERT_EQ(replay(server, {"--tool-timeout", "2"}).exit, 0);
    const auto report = report_json(log_dir());
    EXPECT_EQ(report["collection"]["status"], "complete");
    for (const auto& one : report["health"]) {
        if (one["subsystem"] != "collection") continue;
        EXPECT_EQ(one["health"], "unknown") << one.dump();
        EXPECT_EQ(one["missing"], nlohmann::ordered_json::array(
                                      {"host_mdadm_md0.txt: mdadm: stopped at its time limit"}));
    }
    const auto all = Store(store_in(log_dir()), Store::Mode::read).commands();
    ASSERT_GE(all.size(), 2u);
    EXPECT_TRUE(all[all.size() - 2].text.starts_with("mdadm --detail /dev/md0 "));
    EXPECT_EQ(outcome(all[all.size() - 2]), "stopped at its time limit");
    EXPECT_TRUE(all.back().text.starts_with("lsblk ")) << "the next one is asked";
}

TEST_F(OwnQuestions, AreAllThatACheckOfThisMachineAsks) {
    has_tool("lspci", "echo '00:00.0 Host bridge: Example'");
    has_tool("dmesg", "echo '[    0.000000] Linux version 6.1.0 (x) #1 SMP'");
    const auto outcome = check({"--log-dir", log_dir()});
    EXPECT_EQ(outcome.exit, 3) << outcome.out;
    EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: ")) << outcome.out;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(read_file(log_dir() / "host_lspci.txt"), "00:00.0 Host bridge: Example\n");
    const auto first = commands();
    ASSERT_GE(first.size(), 3u);
    EXPECT_EQ(first[0], "lspci >'host_lspci.txt'");
    EXPECT_EQ(first[1], "dmidecode >'host_dmidecode.txt'");
    EXPECT_EQ(first[2], "dmesg >'host_dmesg.txt'");
    for (const auto& text : first) {
        EXPECT_NE(text.find(" >'host_"), std::string::npos) << text;
        EXPECT_EQ(text.find("events"), std::string::npos) << text;
    }
    EXPECT_TRUE(report_json(log_dir())["modules"].empty());

    // Every five minutes: the directory does not grow.
    EXPECT_EQ(check({"--log-dir", log_dir()}).exit, 3);
    EXPECT_EQ(commands(), first);
    EXPECT_FALSE(fs::exists(log_dir() / "runs"));
}

TEST_F(OwnQuestions, ACheckNeverReplacesAFullReport) {
    ASSERT_EQ(replay(machine("")).exit, 0);
    EXPECT_EQ(check({"--log-dir", log_dir()}).exit, 3);
    ASSERT_TRUE(fs::exists(log_dir() / "runs"));
    int aside = 0;
    for (const auto& entry : fs::directory_iterator(log_dir() / "runs"))
        aside += fs::exists(store_in(entry.path())) ? 1 : 0;
    EXPECT_EQ(aside, 1);
}

TEST_F(OwnQuestions, ACheckWithoutADirectoryLeavesNothing) {
    const auto outcome = check({"--format", "json"});
    EXPECT_EQ(outcome.exit, 3) << outcome.out << outcome.err;
    const auto verdict = nlohmann::json::parse(outcome.out, nullptr, false);
    ASSERT_TRUE(verdict.is_object()) << outcome.out;
    EXPECT_EQ(verdict["health"].size(), 9u);
    EXPECT_TRUE(fs::is_empty(dir() / "tmp"));
}

TEST_F(OwnQuestions, AToolThatHangsInACheckIsStopped) {
    has_tool("dmesg", "echo half; exec sleep 60");
    const auto outcome = check({"--tool-timeout", "1"});
    EXPECT_EQ(outcome.exit, 3);
    EXPECT_NE(outcome.out.find("host_dmesg.txt: dmesg: stopped at its time limit"),
              std::string::npos)
        << outcome.out;
    EXPECT_TRUE(fs::is_empty(dir() / "tmp"));
}

TEST_F(OwnQuestions, ACheckThatCannotBeginSaysSo) {
    write_file(dir() / "file", "");
    const auto outcome = check({"--log-dir", dir() / "file"});
    EXPECT_EQ(outcome.exit, 3);
    EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: ")) << outcome.out;
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
}

}  // namespace

}  // namespace test
