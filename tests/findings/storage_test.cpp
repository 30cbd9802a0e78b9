#include "findings/storage.h"

#include <gtest/gtest.h>

#include "told.h"

namespace qvhost::findings {
namespace {

using inventory::Drive;
using inventory::Inventory;
using inventory::TopologyRow;
using inventory::Volume;
using inventory::VolumeMember;

Drive drive(int slot, const char* state, std::optional<int> group = std::nullopt) {
    Drive one;
    one.place = {"c0_showall.txt", 40 + slot};
    one.controller = 0;
    one.enclosure = 8;
    one.slot = slot;
    one.state = state;
    if (group) one.drive_group = *group;
    one.serial = "Z" + std::to_string(slot);
    return one;
}

Volume volume(int number, const char* raid, const char* state) {
    Volume one;
    one.place = {"c0_showall.txt", 20 + number};
    one.controller = 0;
    one.drive_group = number;
    one.number = number;
    one.raid = raid;
    one.state = state;
    return one;
}

TopologyRow row(int group, const char* type, const char* state) {
    TopologyRow one;
    one.place = {"c0_showall.txt", 10};
    one.controller = 0;
    one.drive_group = group;
    one.type = type;
    one.state = state;
    return one;
}

VolumeMember member(int group, const char* state) {
    VolumeMember one;
    one.place = {"c0_showall.txt", 10};
    one.controller = 0;
    one.drive_group = group;
    one.state = state;
    return one;
}

Lines judged(const Inventory& inventory) {
    Collector findings;
    judge_storage(inventory, {}, findings);
    return told(findings);
}

TEST(Storage, HealthyThingsHaveNoFinding) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID1", "Optl")};
    for (const char* state : {"Onln", "JBOD", "GHS", "DHS", "UGood"})
        inventory.drives.push_back(drive(static_cast<int>(inventory.drives.size()), state));
    inventory.topology = {row(0, "RAID1", "Optl")};
    inventory.controllers.push_back({{"c0_showall.txt", 6}, 0, "X", "S", "1", "Optimal", 1, 5, {}});
    inventory.batteries.push_back({{"c0_showall.txt", 90}, 0, "CVPM05", "Optimal", 100, 24.0, {}});
    EXPECT_EQ(judged(inventory), Lines{});
}

TEST(Storage, AVolumeThatIsBlockedIsNotWell) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID1", "Optl")};
    inventory.volumes[0].access = "RO";
    EXPECT_EQ(judged(inventory), Lines{});
    inventory.volumes[0].access = "B";
    const auto told = judged(inventory);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_TRUE(told[0].starts_with("warning volume_state:")) << told[0];
    EXPECT_TRUE(told[0].ends_with("| access B, blocked")) << told[0];
}

TEST(Storage, StatesOfVolumes) {
    const struct {
        const char* raid;
        const char* state;
        const char* line;
    } cases[] = {
        {"RAID5", "OfLn",
         "critical volume_offline:c0_v0 | Volume 0 of controller 0 (RAID5) | state OfLn"},
        {"RAID5", "Dgrd",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (RAID5) | state Dgrd"},
        {"RAID6", "Dgrd",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (RAID6) | state Dgrd"},
        {"RAID6", "Pdgd",
         "warning volume_degraded:c0_v0 | Volume 0 of controller 0 (RAID6) | state Pdgd"},
        {"6", "Degraded",
         "warning volume_degraded:c0_v0 | Volume 0 of controller 0 (6) | state Degraded"},
        {"5", "Degraded",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (5) | state Degraded"},
        {"RAID1", "Odd",
         "warning volume_state:c0_v0 | Volume 0 of controller 0 (RAID1) | state Odd"},
        {"raid1", "clean, degraded, recovering",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (raid1) | state clean, degraded, recovering"},
        {"raid5", "active, sdc1 faulty, degraded [U_UU]",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (raid5) | state active, sdc1 faulty, degraded [U_UU]"},
        {"raid1", "active, sdc1 faulty, degraded [UU_]",
         "warning volume_degraded:c0_v0 | Volume 0 of controller 0 (raid1) | state active, sdc1 faulty, degraded [UU_]"},
        {"raid1", "active, degraded [U_]",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (raid1) | state active, degraded [U_]"},
        {"raid6", "active, degraded [U_UU]",
         "warning volume_degraded:c0_v0 | Volume 0 of controller 0 (raid6) | state active, degraded [U_UU]"},
        {"raid6", "active, degraded [U_U_]",
         "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (raid6) | state active, degraded [U_U_]"},
        {"raid1", "active, sdc1 faulty",
         "warning volume_state:c0_v0 | Volume 0 of controller 0 (raid1) | state active, sdc1 faulty"},
    };
    for (const auto& one : cases) {
        Inventory inventory;
        inventory.volumes = {volume(0, one.raid, one.state)};
        EXPECT_EQ(judged(inventory), Lines{one.line});
    }
    Inventory unwritten;
    unwritten.volumes = {volume(0, "raid5", "active (auto-read-only)")};
    EXPECT_EQ(judged(unwritten), Lines{});
}

TEST(Storage, TheVolumeDecidesHowBadAFailedDriveIs) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID5", "Dgrd"), volume(1, "RAID6", "Pdgd")};
    inventory.drives = {drive(0, "Offln", 0), drive(1, "Offln", 1), drive(2, "UBad")};
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (RAID5) | state Dgrd",
            "critical drive_failed_no_redundancy:Z0 | Drive 8:0 of controller 0, serial Z0 | state Offln",
            "warning volume_degraded:c0_v1 | Volume 1 of controller 0 (RAID6) | state Pdgd",
            "warning drive_failed:Z1 | Drive 8:1 of controller 0, serial Z1 | state Offln",
            "warning drive_unconfigured_bad:Z2 | Drive 8:2 of controller 0, serial Z2 | state UBad"}));
}

TEST(Storage, WhatBelongsToOneDriveIsOneFinding) {
    Inventory inventory;
    inventory.drives = {drive(3, "Offln", 0)};
    inventory.drives[0].smart_alert = true;
    inventory.drives[0].media_errors = 218;
    inventory.drives[0].other_errors = 4;
    EXPECT_EQ(
        judged(inventory),
        (Lines{"warning drive_failed:Z3 | Drive 8:3 of controller 0, serial Z3 | state Offln; "
               "SMART alert; 218 media errors; 4 other errors"}));
}

TEST(Storage, EachRemarkHasItsOwnLine) {
    Inventory inventory;
    inventory.drives = {drive(3, "Offln", 0)};
    inventory.drives[0].smart_alert = true;
    inventory.drives[0].elsewhere = {{"smart_alert", {"pdlist.txt", 120}}};
    Collector findings;
    judge_storage(inventory, {}, findings);
    const auto all = findings.take();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].evidence, (std::vector<Place>{{"c0_showall.txt", 43}, {"pdlist.txt", 120}}));
}

TEST(Storage, HowFarARebuildIsStandsWhereItWasAsked) {
    Inventory inventory;
    inventory.drives = {drive(3, "Rbld", 0)};
    inventory.drives[0].rebuild_percent = 40;
    const Place asked{"host_storcli_c0_rebuild.txt", 13};
    inventory.drives[0].elsewhere = {{"rebuild_percent", asked}};
    Collector findings;
    judge_storage(inventory, {}, findings);
    const auto all = findings.take();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].evidence, (std::vector<Place>{{"c0_showall.txt", 43}, asked}));
}

TEST(Storage, CountersAtTheirThresholds) {
    Inventory inventory;
    inventory.drives = {drive(0, "Onln"), drive(1, "Onln"), drive(2, "Onln"), drive(3, "Onln")};
    inventory.drives[0].media_errors = 0;
    inventory.drives[0].predicted_failures = 0;
    inventory.drives[0].other_errors = 0;
    inventory.drives[0].shield_counter = 0;
    inventory.drives[0].percentage_used = 79;
    inventory.drives[0].available_spare_percent = 11;
    inventory.drives[1].media_errors = 1;
    inventory.drives[2].percentage_used = 80;
    inventory.drives[2].available_spare_percent = 10;
    inventory.drives[3].other_errors = 1;
    inventory.drives[3].shield_counter = 2;
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical drive_spare_low:Z2 | Drive 8:2 of controller 0, serial Z2 | 10 % of its spare blocks left; "
            "80 % of its life used",
            "warning drive_media_errors:Z1 | Drive 8:1 of controller 0, serial Z1 | 1 media errors",
            "notice drive_other_errors:Z3 | Drive 8:3 of controller 0, serial Z3 | 1 other errors; 2 times shielded"}));
}

TEST(Storage, AForeignDriveIsHealthyInItsStateAlone) {
    Inventory inventory;
    inventory.drives = {drive(0, "UGood")};
    inventory.drives[0].is_foreign = true;
    EXPECT_EQ(
        judged(inventory),
        Lines{
            "warning drive_foreign:Z0 | Drive 8:0 of controller 0, serial Z0 | foreign configuration"});
}

TEST(Storage, RebuildsAndRoutineWork) {
    Inventory inventory;
    inventory.drives = {drive(0, "Rbld", 0)};
    inventory.drives[0].rebuild_percent = 42;
    inventory.volumes = {volume(1, "RAID1", "Optl")};
    inventory.volumes[0].operation = "CC";
    inventory.volumes[0].progress_percent = 12.5;
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "warning drive_rebuild:Z0 | Drive 8:0 of controller 0, serial Z0 | state Rbld; rebuilt to 42 %",
            "notice volume_maintenance:c0_v1 | Volume 1 of controller 0 (RAID1) | CC at 12.5 %"}));
}

TEST(Storage, TheTopologySpeaksWhereNoVolumeDoes) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID5", "Optl"), volume(1, "RAID5", "Dgrd")};
    inventory.topology = {row(0, "RAID5", "Dgrd"), row(1, "RAID5", "Dgrd"),
                          row(2, "RAID6", "Pdgd")};
    inventory.volume_members = {member(0, "Onln")};
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical volume_no_redundancy:c0_v1 | Volume 1 of controller 0 (RAID5) | state Dgrd",
            "critical topology_no_redundancy:c0_dg0 | Drive group 0 of controller 0 | topology says Dgrd for RAID5",
            "warning topology_state:c0_dg2 | Drive group 2 of controller 0 | topology says Pdgd for RAID6"}));
}

TEST(Storage, AMissingMemberIsADriveWithoutASlot) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID5", "Dgrd")};
    // One line stands for both volumes of the group.
    inventory.volume_members = {member(0, "Msng"), member(0, "Msng")};
    inventory.volume_members[0].position = inventory.volume_members[1].position = 2;
    inventory.volume_members[0].volume = 0;
    inventory.volume_members[1].volume = 1;
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (RAID5) | state Dgrd",
            "critical drive_failed_no_redundancy:c0_dg0_row2 | Drive at row 2 of drive group 0 of controller 0 | "
            "topology says Msng"}));
}

TEST(Storage, TheVolumeOfADriveDecidesHoweverItIsTold) {
    Inventory inventory;
    inventory.volumes = {volume(0, "5", "Degraded"), volume(1, "5", "Optimal")};
    for (auto& one : inventory.volumes) one.drive_group.reset();
    inventory.drives = {drive(0, "Failed"), drive(1, "Failed")};
    Volume lost, well;
    lost.place = well.place = {"host_mdstat.txt", 2};
    lost.name = "md0";
    lost.state = "clean, degraded";
    well.name = "md1";
    well.state = "clean";
    inventory.volumes.push_back(lost);
    inventory.volumes.push_back(well);
    for (const char* name : {"/dev/sda", "/dev/sdb"}) {
        Drive one;
        one.place = {"host_smartctl.json", 3};
        one.device = name;
        one.smart_alert = true;
        inventory.drives.push_back(one);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        VolumeMember one;
        one.drive = i;
        if (i < 2) {
            one.controller = 0;
            one.volume = static_cast<int>(i);
        } else {
            one.volume_name = i == 2 ? "md0" : "md1";
            one.state = i == 2 ? "removed" : "active sync";  // the array itself tells of that
        }
        inventory.volume_members.push_back(one);
    }
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (5) | state Degraded",
            "critical volume_no_redundancy:md0 | Volume \"md0\" | state clean, degraded",
            "critical drive_failed_no_redundancy:Z0 | Drive 8:0 of controller 0, serial Z0 | state Failed",
            "critical drive_predicted_no_redundancy:_dev_sda | Drive /dev/sda | SMART alert",
            "warning drive_failed:Z1 | Drive 8:1 of controller 0, serial Z1 | state Failed",
            "warning drive_predicted:_dev_sdb | Drive /dev/sdb | SMART alert"}));
}

TEST(Storage, PredictedFailuresWeighMoreWithoutRedundancy) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID5", "Dgrd")};
    inventory.drives = {drive(0, "Onln", 0), drive(1, "Onln", 1)};
    inventory.drives[0].predicted_failures = 1;
    inventory.drives[1].smart_alert = true;
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (RAID5) | state Dgrd",
            "critical drive_predicted_no_redundancy:Z0 | Drive 8:0 of controller 0, serial Z0 | 1 predicted failures",
            "warning drive_predicted:Z1 | Drive 8:1 of controller 0, serial Z1 | SMART alert"}));
}

TEST(Storage, ControllersBatteriesEnclosures) {
    Inventory inventory;
    inventory.controllers.push_back(
        {{"c0_showall.txt", 6}, 0, "M", "SV1", "1", "Needs Attention", 1, 5, {}});
    inventory.controllers.push_back({{"c1_showall.txt", 6}, 1, "M", {}, "1", "Failed", 1, 5, {}});
    inventory.batteries.push_back(
        {{"c0_showall.txt", 90}, 0, "BBU", "Dgd(Needs Attention)", {}, {}, {}});
    inventory.batteries.push_back({{"c1_showall.txt", 90}, 1, "BBU", "Learning", {}, {}, {}});
    inventory.enclosures.push_back({{"c0_showall.txt", 95}, 0, 8, 24, "Critical", "E", {}, {}});
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical controller_failed:c1 | Controller 1, M | status Failed",
            "warning controller_attention:SV1 | Controller 0, M | status Needs Attention",
            "warning battery:c0_battery | Battery of controller 0, BBU | state Dgd(Needs Attention)",
            "warning enclosure_state:c0_e8 | Enclosure 8 of controller 0 | state Critical",
            "notice battery_maintenance:c1_battery | Battery of controller 1, BBU | state Learning"}));
}

// A pool that is degraded may still lose a drive: each of its groups says whether.
TEST(Storage, GroupsOfAPool) {
    const struct {
        const char* raid;
        std::vector<std::vector<const char*>> groups;
        const char* rule;
    } cases[] = {
        {"mirror", {{"ONLINE", "UNAVAIL"}}, "critical volume_no_redundancy"},
        {"mirror", {{"ONLINE", "UNAVAIL", "ONLINE"}}, "warning volume_degraded"},
        {"mirror", {{"ONLINE", "ONLINE"}, {"ONLINE", "REMOVED"}}, "critical volume_no_redundancy"},
        {"raidz1", {{"ONLINE", "FAULTED", "ONLINE"}}, "critical volume_no_redundancy"},
        {"raidz2", {{"ONLINE", "FAULTED", "ONLINE", "ONLINE"}}, "warning volume_degraded"},
        {"raidz2", {{"FAULTED", "FAULTED", "ONLINE", "ONLINE"}}, "critical volume_no_redundancy"},
        {"raidz3",
         {{"FAULTED", "FAULTED", "ONLINE", "ONLINE", "ONLINE"}},
         "warning volume_degraded"},
        {"raidz2", {}, "critical volume_no_redundancy"},
        {"draid2:4d:6c:0s", {{"FAULTED", "ONLINE", "ONLINE", "ONLINE"}}, "warning volume_degraded"},
        {"draid:4d:6c:0s",
         {{"FAULTED", "ONLINE", "ONLINE", "ONLINE"}},
         "critical volume_no_redundancy"},
    };
    for (const auto& [raid, groups, rule] : cases) {
        Inventory inventory;
        Volume pool;
        pool.name = "tank";
        pool.raid = raid;
        pool.state = "DEGRADED";
        inventory.volumes = {pool};
        for (std::size_t group = 0; group < groups.size(); ++group) {
            for (const char* state : groups[group]) {
                VolumeMember one;
                one.volume_name = "tank";
                one.span = static_cast<std::int64_t>(group);
                one.group = raid;
                one.is_spare = false;
                one.state = state;
                inventory.volume_members.push_back(one);
            }
        }
        const auto lines = judged(inventory);
        ASSERT_EQ(lines.size(), 1U) << raid;
        EXPECT_TRUE(lines[0].starts_with(std::string(rule) + ":tank")) << raid << ": " << lines[0];
    }
}

// The parts of a pool are not alike: each group has its own redundancy, and its log and its cache hold nothing
// that is lost with them.
TEST(Storage, PartsOfAPool) {
    struct Part {
        const char *group, *state, *device;
        std::optional<std::int64_t> span;
    };
    const struct {
        std::vector<Part> parts;
        Lines findings;
    } cases[] = {
        {{{"raidz2", "ONLINE", "a", 0},
          {"mirror", "ONLINE", "b", 1},
          {"mirror", "FAULTED", "c", 1}},
         {"critical volume_no_redundancy:tank | Volume \"tank\" | state DEGRADED",
          "critical drive_failed_no_redundancy:c | Drive c | state FAULTED"}},
        {{{"mirror", "ONLINE", "a", 0}, {"mirror", "ONLINE", "b", 0}, {"log", "REMOVED", "c", {}}},
         {"warning volume_state:tank | Volume \"tank\" | state DEGRADED",
          "warning drive_failed:c | Drive c | state REMOVED, log of a pool"}},
        {{{"mirror", "ONLINE", "a", 0},
          {"mirror", "FAULTED", "b", 0},
          {"cache", "FAULTED", "c", {}}},
         {"critical volume_no_redundancy:tank | Volume \"tank\" | state DEGRADED",
          "critical drive_failed_no_redundancy:b | Drive b | state FAULTED",
          "warning drive_failed:c | Drive c | state FAULTED, cache of a pool"}},
    };
    for (const auto& [parts, expected] : cases) {
        Inventory inventory;
        Volume pool;
        pool.name = "tank";
        pool.state = "DEGRADED";
        inventory.volumes = {pool};
        for (const auto& [group, state, device, span] : parts) {
            Drive drive;
            drive.device = device;
            drive.state = state;
            const std::string part = group;
            if (part == "log" || part == "cache") drive.pool_part = part;
            inventory.drives.push_back(drive);
            if (part == "cache") continue;
            VolumeMember one;
            one.volume_name = "tank";
            one.span = span;
            one.group = part;
            one.is_spare = false;
            one.state = state;
            one.drive = inventory.drives.size() - 1;
            inventory.volume_members.push_back(one);
        }
        EXPECT_EQ(judged(inventory), expected);
    }
}

TEST(Storage, AnInactiveVolumeIsWhole) {
    Inventory inventory;
    inventory.volumes = {volume(0, "RAID1", "Inactive, Okay (IOKY)")};
    EXPECT_EQ(
        judged(inventory),
        (Lines{"warning volume_state:c0_v0 | Volume 0 of controller 0 (RAID1) | state Inactive, "
               "Okay (IOKY): the controller holds it back until it is activated"}));
}

// Whatever stands beside it, a word of a state says what it says alone, and where.
TEST(Storage, AStateOfSeveralWords) {
    Inventory inventory;
    const auto at = [](int line) { return inventory::Place{"host_arcconf_1.txt", line}; };
    inventory.controllers.push_back(
        {at(6), 1, {}, {}, {}, "Failed, temperature: 110 C (Abnormal)", 1, 5, {}});
    inventory.controllers[0].elsewhere = {{"temperature: 110 C (Abnormal)", at(5)}};
    inventory.batteries.push_back(
        {at(12), 1, {}, "Charging, OK, hardware error: Short", {}, {}, {}});
    inventory.batteries[0].elsewhere = {{"hardware error: Short", at(11)}};
    inventory.enclosures.push_back(
        {at(30), 1, 0, {}, "fan 1 status: Failed, power supply 2 status: Failed", {}, {}, {}});
    inventory.enclosures[0].elsewhere = {{"power supply 2 status: Failed", at(31)}};
    inventory.volumes = {volume(0, "5", "Failed, failed stripes: Yes")};
    inventory.volumes[0].elsewhere = {{"state", at(18)}, {"failed stripes: Yes", at(17)}};
    inventory.drives = {drive(0, "Failed", 0), drive(1, "Onln", 1)};
    for (auto& one : inventory.drives) {
        one.temperature_state = "(Abnormal)";
        one.elsewhere = {{"temperature_celsius", at(50)}};
    }
    Collector findings;
    judge_storage(inventory, {}, findings);
    Lines lines;
    for (const auto& finding : findings.take()) {
        lines.push_back(told(finding));
        for (const auto& place : finding.evidence)
            lines.back() += " @" + std::to_string(place.line);
    }
    EXPECT_EQ(
        lines,
        (Lines{
            "critical controller_failed:c1 | Controller 1 | status Failed, temperature: 110 C (Abnormal) @6 @5",
            "critical volume_offline:c0_v0 | Volume 0 of controller 0 (5) | state Failed, failed stripes: Yes @18 @17",
            "critical drive_failed_no_redundancy:Z0 | Drive 8:0 of controller 0, serial Z0 | state Failed; temperature (Abnormal) @40 @50",
            "warning drive_temperature:Z1 | Drive 8:1 of controller 0, serial Z1 | temperature (Abnormal) @50",
            "warning battery:c1_battery | Battery of controller 1 | state Charging, OK, hardware error: Short @11 @12",
            "warning enclosure_state:c1_e0 | Enclosure 0 of controller 1 | state fan 1 status: Failed, power supply 2 status: Failed @30 @31"}));
}

TEST(Storage, WhereTheToolNamesNoGroupsItsControllerDecides) {
    Inventory inventory;
    Volume lost = volume(0, "5", "Degraded");
    lost.drive_group.reset();
    inventory.volumes = {lost};
    inventory.drives = {drive(0, "Failed")};
    EXPECT_EQ(
        judged(inventory),
        (Lines{
            "critical volume_no_redundancy:c0_v0 | Volume 0 of controller 0 (5) | state Degraded",
            "critical drive_failed_no_redundancy:Z0 | Drive 8:0 of controller 0, serial Z0 | state Failed"}));
}

}  // namespace
}  // namespace qvhost::findings
