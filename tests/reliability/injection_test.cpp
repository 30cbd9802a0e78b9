// Every system call fails once (strace -e inject): never a crash, a hang or a silent loss. Once in the
// program alone, once in everything that comes of it: the collecting child, and each of the tools.
// QV_TEST_INJECTIONS=1 hits every place, else some of each call.
#include <algorithm>
#include <cstdlib>

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
    int places;  // that are tried
    int last;    // about where no process makes the call any more
};

class Injection : public ServerTest, public testing::WithParamInterface<Call> {
protected:
    enum class Hit { program, everything };

    Outcome run_with(Hit hit, int place) {
        const auto& call = GetParam();
        auto invocation = collecting({"--quiet", "--tool-timeout", "20"});
        invocation.environment = {{"LSAN_OPTIONS", "detect_leaks=0"}};  // it cannot, when traced
        // Without -f, or beyond execve, nothing is followed.
        const std::vector<std::string> strace{"strace",
                                              "-qq",
                                              "-o",
                                              "/dev/null",
                                              "-f",
                                              "-e",
                                              std::string("trace=") + call.name,
                                              "-e",
                                              std::string("inject=") + call.name + ":error=" +
                                                  call.error + ":when=" + std::to_string(place)};
        auto& program = invocation.program;
        program.insert(program.begin(), strace.begin(), strace.end());
        if (hit == Hit::program) program.insert(program.begin() + 1, {"-b", "execve"});
        return run(invocation);
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

    void try_places(Hit hit) {
        const auto& [call, error, places, last] = GetParam();
        ASSERT_EQ(collect_storage().exit, 0);
        const auto whole = report_json(log_dir())["records"];
        const bool every = setting("QV_TEST_INJECTIONS", 0, 1) != 0;
        const int step = every ? 1 : std::max(1, last / places);
        const int first =
            1 + (std::string(call) == "mmap" ? calls_of_the_loader(call, dir() / "calls") : 0);
        for (int place = first; place < first + last; place += step) {
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
                EXPECT_NE(outcome.err, "") << "a failure says what it is";
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

INSTANTIATE_TEST_SUITE_P(
    Each, Injection,
    testing::Values(Call{"openat", "EMFILE", 4, 260}, Call{"openat", "EIO", 3, 260},
                    Call{"read", "EIO", 4, 160}, Call{"write", "ENOSPC", 4, 300},
                    Call{"write", "EINTR", 2, 300}, Call{"mmap", "ENOMEM", 3, 30},
                    Call{"clone", "EAGAIN", 2, 2}, Call{"clone3", "ENOMEM", 2, 2},
                    Call{"vfork", "ENOMEM", 2, 2}, Call{"pipe2", "EMFILE", 2, 2},
                    Call{"rename", "EIO", 2, 2}, Call{"pwrite64", "ENOSPC", 4, 160},
                    Call{"fallocate", "ENOSPC", 2, 2}, Call{"fallocate", "EINTR", 1, 1},
                    Call{"pread64", "EIO", 4, 60}, Call{"fsync", "EIO", 1, 1},
                    Call{"mkdir", "ENOSPC", 3, 3}, Call{"unlink", "EIO", 2, 8},
                    Call{"fcntl", "EIO", 3, 60}, Call{"poll", "EINTR", 2, 12},
                    Call{"wait4", "EINTR", 2, 8}),
    name_of);

}  // namespace

}  // namespace test
