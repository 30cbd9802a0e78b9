// Processes that SIGKILL does not end, as those that hang inside the kernel. They are waited for no
// longer than a while, named, and left; all else is as it would have been.
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <list>
#include <set>

#include "server.h"

namespace test {

namespace {

namespace fs = std::filesystem;

// While it is held, the process stops in the middle of its own end and answers no further signal.
class Unkillable {
public:
    explicit Unkillable(pid_t pid) : pid_(pid) {
        held_ = ::ptrace(PTRACE_SEIZE, pid, nullptr, PTRACE_O_TRACEEXIT) == 0;
        EXPECT_TRUE(held_) << "process " << pid;
    }
    ~Unkillable() {
        if (!held_) return;
        ::kill(pid_, SIGKILL);
        // Stopped, or ended after all.
        for (int status = 0; ::waitpid(pid_, &status, __WALL) == pid_ && WIFSTOPPED(status);)
            ::ptrace(PTRACE_CONT, pid_, nullptr, nullptr);
    }
    Unkillable(const Unkillable&) = delete;
    Unkillable& operator=(const Unkillable&) = delete;

private:
    pid_t pid_;
    bool held_ = false;
};

class UnkillableProcess : public ServerTest {
protected:
    // What a process of the collection has written down about itself.
    pid_t told_pid() const {
        std::string text;
        wait_until("a process tells its number", [&] {
            text = read_file(pid_file());
            return text.ends_with('\n');
        });
        return std::atoi(text.c_str());
    }
    fs::path pid_file() const { return dir() / "pid"; }

    // Collects, with a tool that hangs and with its shell, of which those cannot be killed.
    void expect_left(const std::function<std::set<pid_t>(pid_t tool)>& unkillable) {
        ASSERT_EQ(collect_storage().exit, 0);
        const auto expected = others(log_dir());
        ASSERT_GT(expected.size(), 20u);
        fs::remove_all(log_dir());

        const auto capture = log_dir().string() + "/raidevents.txt";
        events_do("if [ \"$(readlink /proc/$$/fd/1)\" = '" + capture + "' ]; then echo $$ >'" +
                  pid_file().string() + "'; exec sleep 600; fi; cat \"$recorded/c0_events.txt\"");
        const pid_t program = start(collecting({"--silence-timeout", "5"}));
        const auto pids = unkillable(told_pid());
        std::string why = "stopped because it said no more";
        for (const pid_t pid : pids)
            why += "; process " + std::to_string(pid) + " could not be ended and was left";
        {
            const std::list<Unkillable> held(pids.begin(), pids.end());
            const auto ended = finish(program);
            EXPECT_EQ(ended.exit, 3) << ended.err;
            const auto left = family();
            EXPECT_EQ(std::set<pid_t>(left.begin(), left.end()), pids);
        }
        EXPECT_EQ(family(), std::vector<pid_t>());
        EXPECT_EQ(outcome(log_dir(), "show events > '" + capture), why);
        EXPECT_EQ(reason(log_dir(), "EVENTLOG1"), "storcli: " + why);
        EXPECT_EQ(others(log_dir()), expected);
    }
};

TEST_F(UnkillableProcess, AToolIsNamedAndLeft) {
    expect_left([](pid_t tool) { return std::set<pid_t>{tool}; });
}

TEST_F(UnkillableProcess, AToolAndItsShellAreNamedAndLeft) {
    expect_left([](pid_t tool) { return std::set<pid_t>{tool, ::getpgid(tool)}; });
}

TEST_F(UnkillableProcess, TheCollectingProcessIsNamedAndLeft) {
    const pid_t program =
        start(Invocation{.arguments = collect("faults", {"--module-timeout", "1"}),
                         .environment = {{"QV_TEST_FAULT", "hang"}}});
    wait_until("the tools hang", [&] {
        return read_file(log_dir() / "qvhost.log").find("enumerate M_FAULT") != std::string::npos;
    });
    const pid_t child = child_of(program);
    {
        const Unkillable held(child);
        const auto ended = finish(program);
        EXPECT_EQ(ended.exit, 3);
        EXPECT_NE(ended.err.find("process " + std::to_string(child) +
                                 " cannot be killed and is left behind"),
                  std::string::npos)
            << ended.err;
        EXPECT_NE(ended.err.find("took longer than 1 s while it collected M_FAULT"),
                  std::string::npos)
            << ended.err;
        EXPECT_EQ(family(), std::vector<pid_t>{child});
    }
    EXPECT_EQ(family(), std::vector<pid_t>());
    EXPECT_EQ(counts(store_in(log_dir())),
              (std::map<std::string, int>{{"A_BEFORE", 1000}, {"M_FAULT", 2}, {"Z_AFTER", 0}}));
}

}  // namespace

}  // namespace test
