// machine.json that is not what it should be: told with the file and the key, before anything runs.
#include <sys/stat.h>

#include "program.h"
#include "report.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Machine = ProductTest;

struct Wrong {
    const char* text;
    const char* told;
};

TEST_F(Machine, MistakesAreNamed) {
    const auto deep = std::string(60'000, '[');
    const auto long_name =
        R"({"commands": [{"tool": "t", "stdout": ")" + std::string(300, 'n') + "\"}]}";
    const std::vector<Wrong> mistakes = {
        {"", "no JSON: unexpected end of input"},
        {"{\"uname\":", "no JSON: unexpected end of input"},
        {"[]", "object"},
        {R"({"n": 1e999, "commands": []})", "number overflow"},
        {R"({"uname": 64, "commands": []})", "\"uname\""},
        {R"({"uname": "x"})", "\"commands\""},
        {R"({"host": 1, "commands": []})", "\"host\""},
        {R"({"machine_id": [], "commands": []})", "\"machine_id\""},
        {R"({"os": {}, "commands": []})", "\"os\""},
        {R"({"kernel": "a\u0000", "commands": []})", "NUL"},
        {R"({"uptime_seconds": "1", "commands": []})", "\"uptime_seconds\""},
        {R"({"uptime_seconds": -1, "commands": []})", "\"uptime_seconds\""},
        {R"({"recorded": "yesterday", "commands": []})", "\"recorded\""},
        {R"({"recorded": "2026-11-20T07:30:05Z", "commands": []})", "\"recorded\""},
        {R"({"recorded": 5, "commands": []})", "\"recorded\""},
        {R"({"commands": {}})", "\"commands\""},
        {R"({"lacks": {}, "commands": []})", "\"lacks\""},
        {R"({"lacks": ["x"], "commands": []})", "\"lacks\""},
        {R"({"lacks": [{"words": 1}], "commands": []})", "\"words\""},
        {R"({"asked": 1, "commands": []})", "\"asked\""},
        {R"({"asked": [[]], "commands": []})", "\"asked\""},
        {R"({"asked": [{"tool": []}], "commands": []})", "\"tool\""},
        {R"({"commands": ["lspci"]})", "object"},
        {R"({"commands": [{"args": "x"}]})", "tool"},
        {R"({"commands": [{"tool": ""}]})", "tool"},
        {R"({"commands": [{"tool": "../lspci"}]})", "tool"},
        {R"({"commands": [{"tool": ".."}]})", "tool"},
        {R"({"commands": [{"tool": "t\u0000"}]})", "NUL"},
        {R"({"commands": [{"tool": "t", "args": 1}]})", "\"args\""},
        {R"({"commands": [{"tool": "t", "stdout": 1}]})", "\"stdout\""},
        {R"({"commands": [{"tool": "t", "stdout": "none.txt"}]})", "none.txt"},
        {R"({"commands": [{"tool": "t", "stdout": "../out"}]})", "../out"},
        {R"({"commands": [{"tool": "t", "stdout": "/etc/passwd"}]})", "/etc/passwd"},
        {R"({"commands": [{"tool": "t", "stderr": []}]})", "\"stderr\""},
        {R"({"commands": [{"tool": "t", "exit": 256}]})", "\"exit\""},
        {R"({"commands": [{"tool": "t", "exit": -1}]})", "\"exit\""},
        {R"({"commands": [{"tool": "t", "exit": "1"}]})", "\"exit\""},
        {R"({"commands": [{"tool": "t", "signal": 65}]})", "\"signal\""},
        {R"({"commands": [{"tool": "t", "seconds": -1}]})", "\"seconds\""},
        {R"({"commands": [{"tool": "t", "seconds": 1.5}]})", "\"seconds\""},
        {R"({"commands": [{"tool": "t", "files": ["a"]}]})", "\"files\""},
        {R"({"commands": [{"tool": "t", "files": {"a": 1}}]})", "\"a\""},
        {R"({"commands": [{"tool": "t", "files": {"a": "none"}}]})", "none"},
        {R"({"commands": [{"tool": "t", "files": {"../a": "out"}}]})", "../a"},
        {R"({"commands": [{"tool": "t", "files": {"/a": "out"}}]})", "/a"},
        {R"({"commands": [{"tool": "t", "files": {"..\u0000/a": "out"}}]})",
         "..\\x00/a\" does not lie"},
        {long_name.c_str(), "there is no file"},
        {deep.c_str(), "is nested too deep"},
        {R"({"commands": [{"tool": "t", "files": {"report/report.sqlite-wal": "out"}}]})",
         "is a file of the report"},
        {R"({"commands": [{"tool": "t", "files": {"./report": "out"}}]})",
         "is a file of the report"},
        {R"({"commands": [{"tool": "t", "files": {"report-1/x": "out"}}]})",
         "is a file of the report"},
        {R"({"commands": [{"tool": "t", "files": {".//qvhost.log": "out"}}]})",
         "is a file of the report"},
    };
    const auto machine = dir() / "machine";
    write_file(machine / "out", "");
    for (const auto& [text, told] : mistakes) {
        SCOPED_TRACE(text);
        fs::remove_all(log_dir());
        write_file(machine / "machine.json", text);
        const auto outcome =
            run({"replay", machine, "--log-dir", log_dir(), "--plugin", plugin("asks")});
        EXPECT_EQ(outcome.exit, 1);
        EXPECT_NE(outcome.err.find((machine / "machine.json").string()), std::string::npos)
            << outcome.err;
        EXPECT_NE(outcome.err.find(told), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_FALSE(fs::exists(log_dir())) << "something ran";
    }
}

// A recording may come from anybody, and what it names is shown in the report.
TEST_F(Machine, LinksStayWithinTheRecording) {
    const auto machine = dir() / "machine";
    write_file(dir() / "machine-2" / "shadow", "secret\n");
    write_file(machine / "captures" / "real.txt", "captured\n");
    fs::create_symlink("captures/real.txt", machine / "inside.txt");
    fs::create_symlink("../machine-2/shadow", machine / "out.txt");
    fs::create_directory_symlink(dir() / "machine-2", machine / "way_out");
    fs::create_directory_symlink(machine, dir() / "latest");
    const auto replay = [&](const std::string& command) {
        fs::remove_all(log_dir());
        fs::remove(machine / "machine.json");
        write_file(machine / "machine.json",
                   R"({"commands": [{"tool": "lspci", )" + command + "}]}");
        return run(Invocation{.arguments = {"replay", dir() / "latest", "--log-dir", log_dir(),
                                            "--plugin", plugin("asks")},
                              .environment = {{"QV_TEST_COMMANDS", "lspci 2>&1"}}});
    };
    for (const auto* key : {"stdout", "stderr"}) {
        const auto name = [&](const std::string& file) {
            return "\"" + std::string(key) + "\": \"" + file + "\"";
        };
        EXPECT_EQ(replay(name("inside.txt")).exit, 0);
        EXPECT_EQ(report_json(log_dir())["records"][0]["properties"][0]["value"], "captured\n");
        for (const auto* file : {"out.txt", "way_out/shadow"}) {
            const auto refused = replay(name(file));
            EXPECT_EQ(refused.exit, 1) << file;
            EXPECT_NE(refused.err.find("is a symbolic link that leads to " +
                                       (dir() / "machine-2" / "shadow").string()),
                      std::string::npos)
                << refused.err;
            EXPECT_FALSE(fs::exists(log_dir())) << "something ran";
        }
    }
    EXPECT_EQ(replay(R"("files": {"copy": "out.txt"})").exit, 1);
    EXPECT_EQ(replay(R"("files": {"copy": "inside.txt"})").exit, 0);

    write_file(dir() / "machine-2" / "theirs", R"({"commands": []})");
    fs::remove(machine / "machine.json");
    fs::create_symlink(dir() / "machine-2" / "theirs", machine / "machine.json");
    EXPECT_EQ(run({"replay", machine, "--log-dir", log_dir()}).exit, 1);
}

TEST_F(Machine, WhatIsNoFileIsNotWaitedFor) {
    fs::create_directory(dir() / "machine");
    ASSERT_EQ(::mkfifo((dir() / "machine" / "machine.json").c_str(), 0600), 0);
    const auto refused = run({"replay", dir() / "machine", "--log-dir", log_dir()});
    EXPECT_EQ(refused.exit, 1);
    EXPECT_NE(refused.err.find("machine.json: cannot be read"), std::string::npos) << refused.err;
}

TEST_F(Machine, NoMachineIsToldWithItsFile) {
    const auto outcome = run({"replay", dir() / "nowhere", "--log-dir", log_dir()});
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.err.find((dir() / "nowhere" / "machine.json").string()), std::string::npos);
}

}  // namespace

}  // namespace test
