// Every system call fails once (strace -e inject): never a crash, a hang or a silent loss. Once in the
// program alone, once in everything that comes of it: the collecting child, and each of the tools.
// QV_TEST_INJECTIONS is at how many places each call fails, QV_TEST_SEED which of them are the first.
#include <algorithm>
#include <cstdlib>
#include <random>

#include "server.h"
#include "setting.h"
#include "store/store.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using qvhost::Store;

// How often the loader makes the call before the program begins. What fails there is beyond the program.
int calls_of_the_loader(const std::string& call, const fs::path& trace) {
    const auto command = "strace -qq -o '" + trace.string() + "' -e trace=" + call +
                         " '" QV_PROGRAM "' --version >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return static_cast<int>(lines_of(read_file(trace)).size());
}

struct Call {
    const char* name;
    const char* error;
    long places;  // that are tried
};

class Injection : public ServerTest, public testing::WithParamInterface<Call> {
protected:
    enum class Hit { program, everything };

    // A collection under strace, which follows only the program, or everything that comes of it.
    Outcome run_traced(Hit hit, const fs::path& trace, const std::vector<std::string>& options) {
        auto invocation = collecting({"--quiet", "--tool-timeout", "20"});
        invocation.environment = {{"LSAN_OPTIONS", "detect_leaks=0"}};  // it cannot, when traced
        std::vector<std::string> strace{"strace",
                                        "-qq",
                                        "-o",
                                        trace.string(),
                                        "-f",
                                        "-e",
                                        std::string("trace=") + GetParam().name};
        strace.insert(strace.end(), options.begin(), options.end());
        // Without -f, or beyond execve, nothing is followed.
        if (hit == Hit::program) strace.insert(strace.begin() + 1, {"-b", "execve"});
        auto& program = invocation.program;
        program.insert(program.begin(), strace.begin(), strace.end());
        return run(invocation);
    }

    Outcome run_with(Hit hit, long place) {
        return run_traced(hit, dir() / "hit",
                          {"-e", std::string("inject=") + GetParam().name + ":error=" +
                                     GetParam().error + ":when=" + std::to_string(place)});
    }

    // That the call that failed begins so.
    bool is_hit(const std::string& call) const {
        for (const auto& line : lines_of(read_file(dir() / "hit"))) {
            if (line.ends_with("(INJECTED)") && line.find(' ' + call) != std::string::npos)
                return true;
        }
        return false;
    }

    // How often the process that makes the call most makes it. strace counts for each process.
    long most_calls(Hit hit) {
        const auto trace = dir() / "calls";
        EXPECT_EQ(run_traced(hit, trace, {}).exit, 0);
        std::map<std::string, long> calls;
        for (const auto& line : lines_of(read_file(trace))) {
            if (line.find(std::string(GetParam().name) + "(") != std::string::npos)
                ++calls[line.substr(0, line.find(' '))];
        }
        long most = 0;
        for (const auto& [process, count] : calls) most = std::max(most, count);
        return most;
    }

    // That the report says where something is missing.
    bool is_told() const {
        for (const auto& command : Store(store_in(log_dir()), Store::Mode::read).commands()) {
            if (!qvhost::outcome(command).empty() &&
                command.text.find("eventslog_convert") == std::string::npos)
                return true;
        }
        return false;
    }

    // At most `count` of the numbers from `first` to `last`, in order and spread: one of each share.
    static std::vector<long> some(long first, long last, long count) {
        std::mt19937 random(static_cast<unsigned>(setting("QV_TEST_SEED", 1, 1)));
        const long all = std::max(0L, last - first + 1);
        const long shares = std::min(all, count);
        std::vector<long> chosen;
        for (long share = 0; share < shares; ++share) {
            const long begin = first + all * share / shares;
            const long end = first + all * (share + 1) / shares;
            chosen.push_back(begin + static_cast<long>(random()) % (end - begin));
        }
        return chosen;
    }

    void try_places(Hit hit) {
        const auto& [call, error, places] = GetParam();
        ASSERT_EQ(collect_storage().exit, 0);
        const auto whole = report_json(log_dir())["records"];
        fs::remove_all(log_dir());
        const long last = most_calls(hit);
        if (hit == Hit::program && last == 0) GTEST_SKIP() << "only children make this call";
        ASSERT_GT(last, 0) << "nothing makes this call";
        const long first =
            1 + (std::string(call) == "mmap" ? calls_of_the_loader(call, dir() / "calls") : 0);
        for (const long place : some(first, last, setting("QV_TEST_INJECTIONS", places, 20))) {
            fs::remove_all(log_dir());
            SCOPED_TRACE(std::string(call) + " fails with " + error + " the " +
                         std::to_string(place) + ". time");
            const auto outcome = run_with(hit, place);
            // 127: the loader could not load the program.
            ASSERT_TRUE(outcome.exit == 0 || outcome.exit == 1 || outcome.exit == 3 ||
                        outcome.exit == 127)
                << "exit " << outcome.exit << " signal " << outcome.signal << outcome.err;
            EXPECT_EQ(family(), std::vector<pid_t>());
            if (outcome.exit != 0) {
                // Who could not write to standard error cannot say so.
                EXPECT_TRUE(!outcome.err.empty() || is_hit("write(2, "))
                    << "exit " << outcome.exit << " without a word";
                continue;
            }
            const auto found = report_json(log_dir())["records"];
            counts(store_in(log_dir()));  // passes SQLite's own check
            if (found != whole) {
                EXPECT_TRUE(hit == Hit::everything && is_told())
                    << found.size() << " records of " << whole.size();
            }
        }
    }
};

TEST_P(Injection, IntoTheProgramIsToldOrMadeUpFor) { try_places(Hit::program); }

TEST_P(Injection, IntoEverythingIsToldOrMadeUpFor) { try_places(Hit::everything); }

std::string name_of(const testing::TestParamInfo<Call>& call) {
    return std::string(call.param.name) + "_" + call.param.error;
}

INSTANTIATE_TEST_SUITE_P(Each, Injection,
                         testing::Values(Call{"openat", "EMFILE", 4}, Call{"openat", "EIO", 3},
                                         Call{"read", "EIO", 4}, Call{"write", "ENOSPC", 4},
                                         Call{"write", "EINTR", 2}, Call{"mmap", "ENOMEM", 3},
                                         Call{"clone", "EAGAIN", 2}, Call{"clone3", "ENOMEM", 2},
                                         Call{"vfork", "ENOMEM", 2}, Call{"pipe2", "EMFILE", 2},
                                         Call{"rename", "EIO", 2}, Call{"pwrite64", "ENOSPC", 4},
                                         Call{"fallocate", "ENOSPC", 2},
                                         Call{"fallocate", "EINTR", 1}, Call{"pread64", "EIO", 4},
                                         Call{"fsync", "EIO", 1}, Call{"mkdir", "ENOSPC", 3},
                                         Call{"unlink", "EIO", 2}, Call{"fcntl", "EIO", 3},
                                         Call{"poll", "EINTR", 2}, Call{"wait4", "EINTR", 2}),
                         name_of);

}  // namespace

}  // namespace test
