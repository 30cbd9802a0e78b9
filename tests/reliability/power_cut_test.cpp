// The power goes: a collection's directory as the disk may have it then, after the report was told and at any step
// before. QV_TEST_POWER_CUTS says how many steps are tried.
#include "power_cut.h"
#include "server.h"
#include "setting.h"

namespace test {

namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using Rest = PowerCut::Rest;

class Power : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        fs::copy_file(QV_POWER_RECORDER, recorder());
    }

    // Collects; the power is cut at that step, 0: not at all.
    Outcome collect_until(long step) {
        fs::remove_all(log_dir());
        fs::remove_all(notes());
        fs::create_directory(notes());
        auto invocation = collecting({"--quiet"});
        invocation.environment = {{"LD_PRELOAD", recorder()},
                                  {"QV_POWER_DIRECTORY", log_dir()},
                                  {"QV_POWER_NOTES", notes()}};
        if (step > 0) invocation.environment["QV_POWER_CUT"] = std::to_string(step);
        auto outcome = run(invocation);
        wait_until("no process is left", [&] { return family().empty(); });
        return outcome;
    }

    long steps() const { return static_cast<long>(fs::file_size(notes() / "steps")); }

    // The directory as it was left is `left()`; in its place is what a disk may have.
    void leave() {
        fs::remove_all(left());
        fs::rename(log_dir(), left());
    }
    void cut(Rest rest, std::mt19937& random) {
        fs::remove_all(log_dir());
        PowerCut(left(), notes()).build(log_dir(), rest, random);
    }

    // Everything that was left is there.
    void expect_all_of_it() const {
        for (const auto& entry : fs::recursive_directory_iterator(left())) {
            const auto name = entry.path().lexically_relative(left());
            if (entry.is_directory()) continue;
            ASSERT_TRUE(fs::exists(log_dir() / name)) << name;
            ASSERT_TRUE(read_file(entry.path()) == read_file(log_dir() / name)) << name;
        }
    }

    // What there is is true, and its lack is told.
    void expect_told(const ordered_json& whole) {
        const auto shown = run({"show", log_dir(), "RAIDINFO", "--no-pager"});
        ASSERT_EQ(shown.signal, 0) << shown.err;
        ASSERT_TRUE(shown.exit == 0 || shown.exit == 1) << shown.exit;
        if (shown.exit == 1) {
            EXPECT_TRUE(shown.err.starts_with("qvhost: ")) << shown.err;
            return;
        }
        counts(store_in(log_dir()));  // passes SQLite's own check
        ASSERT_TRUE(fs::exists(log_dir() / "report" / "report.json"))
            << "half a store was shown and not completed: " << shown.err;
        const auto found = report_json(log_dir())["records"];
        if (meta(store_in(log_dir()), "status") == "complete") {
            EXPECT_EQ(found, whole);
            return;
        }
        EXPECT_NE(shown.err.find("incomplete"), std::string::npos) << shown.err;
        ASSERT_LE(found.size(), whole.size());
        for (std::size_t i = 0; i < found.size(); ++i) ASSERT_EQ(found[i], whole[i]) << i;
    }

    // A path in LD_PRELOAD ends at a blank, which that of the build may have.
    fs::path recorder() const { return dir() / "recorder.so"; }
    fs::path notes() const { return dir() / "notes"; }
    fs::path left() const { return dir() / "left"; }
};

TEST_F(Power, NothingIsLostOnceTheReportIsTold) {
    ASSERT_EQ(collect_until(0).exit, 0);
    ASSERT_GT(steps(), 50) << "nobody noted what was synced";
    leave();
    std::mt19937 random(static_cast<unsigned>(setting("QV_TEST_SEED", 1, 1)));
    for (int i = 0; i < 12; ++i) {
        SCOPED_TRACE(i);
        cut(i == 0 ? Rest::lost : Rest::partly, random);
        ASSERT_NO_FATAL_FAILURE(expect_all_of_it());
        const auto shown = run({"show", log_dir(), "RAIDINFO", "--no-pager"});
        EXPECT_EQ(shown.exit, 0) << shown.err;
        EXPECT_EQ(shown.err, "");
        EXPECT_EQ(counts(store_in(log_dir())).at("PDLIST"), 12);
    }
}

TEST_F(Power, WhatIsThereBeforeIsTrueAndItsLackIsTold) {
    ASSERT_EQ(collect_until(0).exit, 0);
    const auto whole = report_json(log_dir())["records"];
    ASSERT_GT(whole.size(), 3000u);
    const auto all = steps();
    ASSERT_GT(all, 50);
    std::mt19937 random(static_cast<unsigned>(setting("QV_TEST_SEED", 1, 1)));
    const long cuts = repetitions("QV_TEST_POWER_CUTS", 6, 60);
    for (long i = 0; i < cuts; ++i) {
        const auto step = 1 + static_cast<long>(random() % static_cast<unsigned long>(all));
        collect_until(step);
        if (!fs::exists(log_dir())) continue;
        leave();
        for (int disk = 0; disk < 4; ++disk) {
            SCOPED_TRACE("cut " + std::to_string(i) + " at step " + std::to_string(step) + " of " +
                         std::to_string(all) + ", disk " + std::to_string(disk));
            constexpr Rest kRests[] = {Rest::lost, Rest::kept, Rest::partly, Rest::partly};
            cut(kRests[disk], random);
            ASSERT_NO_FATAL_FAILURE(expect_told(whole));
        }
        const auto again = run(collecting({"--quiet"}));
        EXPECT_EQ(again.exit, 0) << again.err;
        EXPECT_EQ(report_json(log_dir())["records"], whole);
        if (HasFailure()) return;
    }
}

}  // namespace

}  // namespace test
