#include "findings/history.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "findings/storage.h"
#include "findings/storage_names.h"
#include "findings/storage_past.h"
#include "told.h"

namespace qvhost::findings {
namespace {

using inventory::Drive;
using inventory::Inventory;

Finding storage_finding(const std::string& id, const Text& first_seen = {}) {
    Finding finding;
    finding.id = id;
    finding.subsystem = Subsystem::storage;
    finding.first_seen = first_seen;
    return finding;
}

// A run on that day which has these findings, or could not tell of storage.
EarlierVerdict run_on(const std::string& day, const std::vector<Finding>& findings,
                      HealthWord health = HealthWord::warning) {
    EarlierVerdict run{"2026-11-" + day + "T02:00:00Z", {}};
    run.verdict.findings = findings;
    run.verdict.health.push_back({Subsystem::storage, health, {}, {}});
    return run;
}

constexpr const char* kNow = "2026-11-22T02:00:00Z";

struct Told {
    std::string first_seen;
    std::size_t runs_read = 0;
    bool operator==(const Told&) const = default;
};

Told told(const std::vector<EarlierVerdict>& runs, const Text& event = {}) {
    std::vector<Finding> findings{storage_finding("x:1", event)};
    std::size_t next = 0;
    add_first_seen(
        kNow,
        [&]() -> std::optional<EarlierVerdict> {
            if (next == runs.size()) return std::nullopt;
            return runs[next++];
        },
        findings);
    return {findings[0].first_seen.value_or("null"), next};
}

TEST(FirstSeen, IsTheFirstOfTheRunsWithoutAGap) {
    const std::vector<Finding> has{storage_finding("x:1")};
    const std::vector<Finding> other{storage_finding("x:2")};
    EXPECT_EQ(told({}), (Told{"null", 0})) << "nobody knows";
    EXPECT_EQ(told({run_on("21", other)}), (Told{kNow, 1}));
    EXPECT_EQ(told({run_on("21", has)}), (Told{"2026-11-21T02:00:00Z", 1}));
    EXPECT_EQ(told({run_on("21", has), run_on("20", has)}), (Told{"2026-11-20T02:00:00Z", 2}));
    EXPECT_EQ(told({run_on("21", has), run_on("20", {}), run_on("19", has)}),
              (Told{"2026-11-21T02:00:00Z", 2}));
    // A run that could not tell is no gap.
    EXPECT_EQ(told({run_on("21", has), run_on("20", {}, HealthWord::unknown), run_on("19", has)}),
              (Told{"2026-11-19T02:00:00Z", 3}));
    EXPECT_EQ(told({run_on("21", {}, HealthWord::unknown)}), (Told{"null", 1}));
}

// The run before has asked those before it.
TEST(FirstSeen, IsTakenOverFromTheRunBefore) {
    EXPECT_EQ(told({run_on("21", {storage_finding("x:1", "2026-10-01T02:00:00Z")}),
                    run_on("20", {storage_finding("x:1")})}),
              (Told{"2026-10-01T02:00:00Z", 1}));
}

TEST(FirstSeen, IsTheEventsTimeUnlessItWasGoneSince) {
    const std::string event = "2026-11-20T17:30:00";
    const std::vector<Finding> has{storage_finding("x:1")};
    EXPECT_EQ(told({}, event), (Told{event, 0}));
    EXPECT_EQ(told({run_on("21", has)}, event), (Told{event, 1}));
    EXPECT_EQ(told({run_on("20", {})}, event), (Told{event, 1})) << "it began behind that run";
    EXPECT_EQ(told({run_on("21", {})}, event), (Told{kNow, 1})) << "it was gone";
    EXPECT_EQ(told({run_on("19", has)}, event), (Told{"2026-11-19T02:00:00Z", 1}));
}

TEST(Growth, IsSaidOfDrives) {
    Inventory found;
    Drive drive;
    drive.controller = 0;
    drive.enclosure = 252;
    drive.slot = 1;
    drive.serial = "Z1";
    drive.media_errors = 50;
    drive.place = {"a.txt", 3};
    found.drives.push_back(drive);
    const std::vector<GrownCounter> grown{
        {{"drives", 1}, {"media_errors", 1, 50, "2026-10-23T02:00:00Z"}},
        {{"drives", 1}, {"percentage_used", 3, 4, "2026-10-23T02:00:00Z"}},
        {{"drives", 9}, {"media_errors", 1, 50, "2026-10-23T02:00:00Z"}},
        {{"volumes", 1}, {"media_errors", 1, 50, "2026-10-23T02:00:00Z"}},
    };
    Collector collector;
    collector.add(subject_of(found, drive), "drive_media_errors", "50 media errors", drive.place);
    Past past;
    past.grown = grown;
    judge_storage_past(found, past, Redundancy(found), collector);
    auto findings = collector.take();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].id, "drive_media_errors_grow:Z1");
    EXPECT_EQ(findings[0].says,
              "media errors grew from 1 to 50 since 2026-10-23T02:00:00Z; 50 media errors");
    add_growth(grown, findings);
    EXPECT_EQ(findings[0].growth, (std::vector<Growth>{grown[0].growth, grown[1].growth}));
}

Drive rebuilt_drive(const std::string& serial, double percent) {
    Drive drive;
    drive.controller = 0;
    drive.enclosure = 252;
    drive.slot = 1;
    drive.serial = serial;
    drive.rebuild_percent = percent;
    return drive;
}

EarlierRun earlier_run(const std::vector<Drive>& drives,
                       const std::vector<Unchanged>& unchanged = {}) {
    EarlierRun run{"2026-11-21T02:00:00Z", {}, {}};
    run.inventory.drives = drives;
    run.verdict.unchanged = unchanged;
    return run;
}

TEST(Unchanged, IsWhatTheRunBeforeReadOfTheSameDrive) {
    Inventory now;
    now.drives = {rebuilt_drive("Z0", 1), rebuilt_drive("Z1", 40)};
    const EntityRef second{"drives", 2};
    EXPECT_EQ(unchanged_since(earlier_run({rebuilt_drive("Z1", 40)}), now),
              (std::vector<Unchanged>{{second, "rebuild_percent", "2026-11-21T02:00:00Z"}}));
    EXPECT_EQ(unchanged_since(earlier_run({rebuilt_drive("Z1", 39)}), now),
              std::vector<Unchanged>{});
    EXPECT_EQ(unchanged_since(earlier_run({rebuilt_drive("Z2", 40)}), now),
              std::vector<Unchanged>{})
        << "another drive in its slot";
}

TEST(Unchanged, IsTakenOverFromTheRunBefore) {
    Inventory now;
    now.drives = {rebuilt_drive("Z1", 40)};
    now.drives[0].media_errors = 3;
    auto before = rebuilt_drive("Z1", 40);
    before.media_errors = 2;
    const EntityRef drive{"drives", 1};
    EXPECT_EQ(
        unchanged_since(earlier_run({before}, {{drive, "rebuild_percent", "2026-11-20T02:00:00Z"},
                                               {drive, "media_errors", "2026-11-19T02:00:00Z"}}),
                        now),
        (std::vector<Unchanged>{{drive, "rebuild_percent", "2026-11-20T02:00:00Z"}}));
}

TEST(Unchanged, IsNothingWhereThereAreNoErrors) {
    Inventory now;
    now.drives = {rebuilt_drive("Z1", 40)};
    now.drives[0].rebuild_percent.reset();
    now.drives[0].media_errors = 0;
    EXPECT_EQ(unchanged_since(earlier_run(now.drives), now), std::vector<Unchanged>{});
}

TEST(FormerSpares, AreNoSparesNow) {
    auto spare = rebuilt_drive("Z1", 0), other = rebuilt_drive("Z2", 0);
    spare.spare = "global";
    Inventory now;
    now.drives = {other, rebuilt_drive("Z1", 0)};
    EXPECT_EQ(former_spares_of(earlier_run({spare, other}), now), std::set<std::size_t>{1});
    EXPECT_EQ(former_spares_of(earlier_run({other}), now), std::set<std::size_t>{});
    now.drives[1].spare = "global";
    EXPECT_EQ(former_spares_of(earlier_run({spare}), now), std::set<std::size_t>{});
}

// The run before knew it as one in use, and no longer as a spare.
TEST(FormerSpares, AreKnownFromTheFindingOfTheRunBefore) {
    Inventory now;
    now.drives = {rebuilt_drive("Z1", 0)};
    auto earlier = earlier_run({rebuilt_drive("Z0", 0), rebuilt_drive("Z1", 0)});
    Finding finding = storage_finding("spare_in_use:c0_spares");
    finding.rule = "spare_in_use";
    finding.entities = {{"drives", 2}, {"drives", 9}, {"volumes", 1}};
    earlier.verdict.findings = {finding};
    EXPECT_EQ(former_spares_of(earlier, now), std::set<std::size_t>{0});
}

}  // namespace
}  // namespace qvhost::findings
