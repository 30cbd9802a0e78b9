// Many collections one after another: nothing grows. QV_TEST_SOAK says how many.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "server.h"

namespace test {

namespace {

namespace fs = std::filesystem;

int temporary_files() {
    int count = 0;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path(), ignored))
        count += entry.path().filename().string().starts_with("qvhost-");
    return count;
}

class Soak : public ServerTest {
protected:
    long peak_of_a_run() {
        // A run of its own process: the peak of all children so far would hide a smaller one.
        auto invocation = collecting({"--quiet"});
        const auto file = dir() / "peak";
        invocation.program.insert(
            invocation.program.begin(),
            {"/bin/sh", "-c",
             "\"$@\"; code=$?; grep VmHWM /proc/self/status >'" + file.string() + "'; exit $code",
             "sh"});
        EXPECT_EQ(run(invocation).exit, 0);
        rusage usage{};
        ::getrusage(RUSAGE_CHILDREN, &usage);
        return usage.ru_maxrss;
    }
};

TEST_F(Soak, NothingGrows) {
    const int runs = setting("QV_TEST_SOAK", 8);
    ASSERT_GE(runs, 4);
    fs::remove_all(log_dir());
    const auto first = peak_of_a_run();
    const auto files = temporary_files();
    const auto whole = report_json(log_dir())["records"];
    for (int i = 1; i < runs; ++i) {
        fs::remove_all(log_dir());
        ASSERT_LE(peak_of_a_run(), first + first / 10) << "KiB in run " << i;
        ASSERT_EQ(family(), std::vector<pid_t>());
        ASSERT_LE(temporary_files(), files);
        ASSERT_EQ(report_json(log_dir())["records"], whole);
    }
}

// In one directory: each earlier report moves aside, and stays as it was.
TEST_F(Soak, OneDirectoryKeepsEveryReport) {
    const int runs = setting("QV_TEST_SOAK", 8);
    for (int i = 0; i < runs; ++i) ASSERT_EQ(run(collecting({"--quiet"})).exit, 0);
    int earlier = 0;
    for (const auto& entry : fs::directory_iterator(log_dir())) {
        if (!entry.path().filename().string().starts_with("report-")) continue;
        ++earlier;
        EXPECT_EQ(counts(entry.path() / "report.sqlite").at("PDLIST"), 12);
        EXPECT_TRUE(fs::exists(entry.path() / "index.html"));
    }
    EXPECT_EQ(earlier, runs - 1);
}

}  // namespace

}  // namespace test
