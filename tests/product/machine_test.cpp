// machine.json that is not what it should be: told with the file and the key, before anything runs.
#include "program.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Machine = ProductTest;

struct Wrong {
    const char* text;
    const char* told;
};

TEST_F(Machine, MistakesAreNamed) {
    const auto long_name =
        R"({"commands": [{"tool": "t", "stdout": ")" + std::string(300, 'n') + "\"}]}";
    const std::vector<Wrong> mistakes = {
        {"", "parse error"},
        {"{\"uname\":", "parse error"},
        {"[]", "object"},
        {R"({"n": 1e999, "commands": []})", "number overflow"},
        {R"({"uname": 64, "commands": []})", "\"uname\""},
        {R"({"uname": "x"})", "\"commands\""},
        {R"({"commands": {}})", "\"commands\""},
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

TEST_F(Machine, NoMachineIsToldWithItsFile) {
    const auto outcome = run({"replay", dir() / "nowhere", "--log-dir", log_dir()});
    EXPECT_EQ(outcome.exit, 1);
    EXPECT_NE(outcome.err.find((dir() / "nowhere" / "machine.json").string()), std::string::npos);
}

}  // namespace

}  // namespace test
