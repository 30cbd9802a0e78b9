// "qvhost show" on a terminal.
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "report_under_test.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

// Without the escape sequences by which a program controls its terminal.
std::string without_controls(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\x1b') {
            plain += text[i];
        } else if (++i < text.size() && text[i] == '[') {
            i = text.find_first_not_of("0123456789;?", i + 1);
        }
    }
    return plain;
}

class Pager : public ReportTest {
protected:
    void SetUp() override {
        ReportTest::SetUp();
        store_ = store_with({record({{"a", "A", "first"s}, {"b", "B", 1}})});
        expected_ = run({"show", store_, "T"}).out;
        ASSERT_NE(expected_.find("first"), std::string::npos);
    }
    void TearDown() override {
        if (terminal_ >= 0) ::close(terminal_);
        ReportTest::TearDown();
    }

    // Starts it as the shell of a terminal 80 columns wide would.
    pid_t start_on_terminal(const std::map<std::string, std::string>& environment,
                            const std::vector<std::string>& more = {}) {
        if (terminal_ >= 0) ::close(terminal_);
        std::vector<std::string> texts{QV_PROGRAM, "show", store_, "T"};
        texts.insert(texts.end(), more.begin(), more.end());
        std::vector<char*> arguments;
        for (auto& text : texts) arguments.push_back(text.data());
        arguments.push_back(nullptr);
        winsize size{};
        size.ws_row = 24;
        size.ws_col = 80;
        const pid_t pid = ::forkpty(&terminal_, nullptr, nullptr, &size);
        if (pid < 0) throw std::runtime_error("no terminal");
        if (pid > 0) return pid;
        ::setenv("QV_TEST_RUN", dir().c_str(), 1);
        ::setenv("TERM", "dumb", 1);
        for (const char* name : {"PAGER", "LESS", "COLUMNS", "NO_COLOR"}) ::unsetenv(name);
        for (const auto& [name, value] : environment) ::setenv(name.c_str(), value.c_str(), 1);
        ::execv(QV_PROGRAM, arguments.data());
        ::_exit(99);
    }

    // What the terminal shows until the text is there, or till all who write to it are gone.
    std::string read_until(const std::string& text) const {
        std::string shown;
        char block[4096];
        while (text.empty() || shown.find(text) == std::string::npos) {
            const ssize_t n = ::read(terminal_, block, sizeof block);
            if (n <= 0) break;
            for (ssize_t i = 0; i < n; ++i) {
                if (block[i] != '\r') shown += block[i];
            }
        }
        return shown;
    }

    static int exit_of(pid_t pid) {
        int status = 0;
        ::waitpid(pid, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    std::string shown(const std::map<std::string, std::string>& environment,
                      const std::vector<std::string>& more = {}) {
        const pid_t pid = start_on_terminal(environment, more);
        const auto text = read_until("");
        EXPECT_EQ(exit_of(pid), 0);
        return text;
    }

    // Far more than a pipe holds.
    void make_long() {
        fs::remove(store_);
        std::vector<qvhost::Record> records;
        for (int i = 0; i < 20'000; ++i)
            records.push_back(record({{"a", "A", "x"s}, {"b", "B", i}}));
        store_with(records);
    }

    int terminal_ = -1;
    fs::path store_;
    std::string expected_;
};

TEST_F(Pager, GetsAllThatIsShown) {
    const auto file = dir() / "paged";
    EXPECT_EQ(shown({{"PAGER", "cat >" + file.string() + "; echo through it"}}), "through it\n");
    EXPECT_EQ(read_file(file), expected_);
}

TEST_F(Pager, IsLessWithItsUsualOptions) {
    const auto tools = dir() / "tools";
    write_file(tools / "less", "#!/bin/sh\necho \"less $LESS\"\ncat\n");
    fs::permissions(tools / "less", fs::perms::owner_all);
    const auto path = tools.string() + ":" + std::getenv("PATH");
    EXPECT_EQ(shown({{"PATH", path}}), "less FRX\n" + expected_);
    EXPECT_EQ(shown({{"PATH", path}, {"LESS", "i"}}), "less i\n" + expected_);
}

TEST_F(Pager, LessItselfLeavesWhatFitsOnTheScreen) {
    EXPECT_EQ(without_controls(shown({{"TERM", "vt100"}, {"NO_COLOR", "1"}})), expected_);
}

TEST_F(Pager, IsNotUsedWhereItIsNotWanted) {
    EXPECT_EQ(shown({{"PAGER", ""}}), expected_);
    EXPECT_EQ(shown({{"PAGER", "cat"}}), expected_);
    EXPECT_EQ(shown({{"PAGER", "echo the pager"}}, {"--no-pager"}), expected_);
    const auto piped = run(Invocation{.arguments = {"show", store_, "T"},
                                      .environment = {{"PAGER", "echo the pager"}}});
    EXPECT_EQ(piped.out, expected_);
}

TEST_F(Pager, ThatIsMissingIsNoError) {
    const auto text = shown({{"PAGER", (dir() / "no-such-pager").string()}});
    EXPECT_TRUE(text.ends_with("no-such-pager: not found\n" + expected_)) << text;
    make_long();
    const auto expected = run({"show", store_, "T"}).out;
    const auto all = shown({{"PAGER", (dir() / "no-such-pager").string()}});
    EXPECT_TRUE(all.ends_with("no-such-pager: not found\n" + expected));
}

TEST_F(Pager, ThatIsQuitEarlyIsNoError) {
    make_long();
    EXPECT_EQ(shown({{"PAGER", "head -n 1"}}), "T (Module), 20000 records\n");
    EXPECT_EQ(shown({{"PAGER", "exit 3"}}), "");
}

// less takes Ctrl-C for the end of its reading, not of itself.
TEST_F(Pager, CtrlCIsThePagersBusiness) {
    make_long();
    const pid_t pid = start_on_terminal(
        {{"PAGER", "trap 'echo asked; exit 0' INT; echo ready; while :; do sleep 0.05; done"}});
    EXPECT_EQ(read_until("ready\n"), "ready\n");
    EXPECT_EQ(::write(terminal_, "\x03", 1), 1);
    EXPECT_NE(read_until("asked\n").find("asked\n"), std::string::npos);
    EXPECT_EQ(exit_of(pid), 0);
}

// As other tools do: "qvhost show DIR | head" says nothing.
TEST_F(Pager, AReaderThatGoesAwayEndsItByItsSignal) {
    make_long();
    const auto shell = [&](const std::string& script) {
        const auto out = dir() / "said";
        const auto command = "set -o pipefail; (" + script + ") >" + out.string() +
                             " 2>&1; echo $? >>" + out.string();
        EXPECT_EQ(std::system(("bash -c '" + command + "'").c_str()), 0);
        return read_file(out);
    };
    EXPECT_EQ(shell("\"" QV_PROGRAM "\" show "s + store_.string() + " T | head -n 1"),
              "T (Module), 20000 records\n141\n");
}

}  // namespace

}  // namespace test
