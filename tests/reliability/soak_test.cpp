// Many collections one after another: nothing grows. QV_TEST_SOAK says how many.
#include <unistd.h>

#include <algorithm>

#include "peak.h"
#include "server.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;

using Soak = ServerTest;

TEST_F(Soak, NothingGrows) {
    const long runs = setting("QV_TEST_SOAK", 8, 200);
    // How much a run takes depends on how its processes happen to meet; some runs show the range.
    const long first_runs = std::max(4L, runs / 10);
    long peak = 0;
    auto invocation = collecting({"--quiet"});
    fs::create_directory(dir() / "temporary");
    invocation.environment = {{"TMPDIR", dir() / "temporary"}};
    nlohmann::ordered_json whole;
    for (int i = 0; i < std::max(runs, 2 * first_runs); ++i) {
        fs::remove_all(log_dir());
        ASSERT_EQ(run(invocation).exit, 0);
        ASSERT_EQ(family(), std::vector<pid_t>());
        if (i == 0) {
            whole = report_json(log_dir())["records"];
        }
        if (i < first_runs) peak = peak_so_far();
        ASSERT_TRUE(fs::is_empty(dir() / "temporary"));
        ASSERT_EQ(report_json(log_dir())["records"], whole);
    }
    EXPECT_TRUE(!kMemoryTells || peak_so_far() <= peak + peak / 4)
        << peak << " KiB at first, then " << peak_so_far();
}

// In one directory: each earlier run moves aside, and stays as it was.
TEST_F(Soak, OneDirectoryKeepsEveryReport) {
    const long runs = setting("QV_TEST_SOAK", 8, 200);
    for (int i = 0; i < runs; ++i) ASSERT_EQ(run(collecting({"--quiet"})).exit, 0);
    int earlier = 0;
    for (const auto& entry : fs::directory_iterator(log_dir() / "runs")) {
        ++earlier;
        EXPECT_EQ(counts(store_in(entry.path())).at("PDLIST"), 12);
        EXPECT_TRUE(fs::exists(entry.path() / "report" / "index.html"));
        EXPECT_TRUE(fs::exists(entry.path() / "pdlist.txt"));
    }
    EXPECT_EQ(earlier, runs - 1);
}

}  // namespace

}  // namespace test
