#include "inventory/storage/join.h"

#include <gtest/gtest.h>

#include <sstream>

#include "describe.h"
#include "inventory/storage/captures.h"

namespace qvhost::inventory {
namespace {

struct Named {
    const char* name;
    std::string text;
};

// Reads the captures by their names and joins what they tell.
Inventory joined(const std::vector<Named>& captures, std::size_t gaps = 0) {
    Inventory found;
    for (const auto& [name, text] : captures) {
        const auto* const capture = reader_for(storage_captures(), name);
        EXPECT_NE(capture, nullptr) << name;
        if (!capture) continue;
        CaptureLines lines(text);
        Reading reading{name, found, {}, {}};
        capture->read(lines, reading);
    }
    EXPECT_EQ(join_storage(found).size(), gaps);
    return found;
}

std::string list(const std::string& controller, const std::string& rows) {
    return "Controller = " + controller +
           "\nStatus = Success\nDescription = None\n\nPD LIST :\n=======\n\n"
           "------------------------------------------------------\n"
           "EID:Slt DID State DG       Size Intf Med SeSz Model   \n"
           "------------------------------------------------------\n" +
           rows + "------------------------------------------------------\n";
}

std::string details(const std::string& drive, const std::string& serial) {
    return "Drive " + drive + " State :\n=====\nMedia Error Count = 2\n" +
           "S.M.A.R.T alert flagged by drive = No\nDrive " + drive +
           " Device attributes :\n=====\nSN = " + serial +
           "\nModel Number = EX1000 LONG\nFirmware Revision = A\nDrive " + drive +
           " Policies/Settings :\n=====\n";
}

const std::string kOnline = "252:1     9 Onln   0 930.390 GB SATA HDD 512B EX1000  \n";
const std::string kFailed = "252:2    10 Failed 0 930.390 GB SATA HDD 512B EX1000  \n";

TEST(Join, lists_and_details_of_a_drive_are_one) {
    const auto answer = "Controller = 0\nStatus = Success\nDescription = None\n" +
                        details("/c0/e252/s1", "S1") + details("/c0/e252/s2", "S2");
    const auto found = joined({
        {"c0_showall.txt", list("0", kOnline + kFailed)},
        {"c0_pdlist.txt", answer},
        {"c1_showall.txt", list("1", kOnline)},
        {"c1_pdlist.txt", answer},
        {"pdlist.txt", answer},
    });
    EXPECT_EQ(describe(found, true),
              "drives c0_showall.txt 11: controller=0 enclosure=252 slot=1 device_id=9 state=Onln "
              "drive_group=0 is_foreign=no capacity_bytes=998998655631 interface=SATA media=HDD "
              "sector_bytes=512 model=EX1000 LONG serial=S1 firmware=A media_errors=2 "
              "smart_alert=no\n"
              "drives c0_showall.txt 12: controller=0 enclosure=252 slot=2 device_id=10 "
              "state=Failed drive_group=0 is_foreign=no capacity_bytes=998998655631 interface=SATA "
              "media=HDD sector_bytes=512 model=EX1000 LONG serial=S2 firmware=A media_errors=2 "
              "smart_alert=no\n"
              "drives c1_showall.txt 11: controller=1 enclosure=252 slot=1 device_id=9 state=Onln "
              "drive_group=0 is_foreign=no capacity_bytes=998998655631 interface=SATA media=HDD "
              "sector_bytes=512 model=EX1000\n"
              "volume_members c0_showall.txt 11: controller=0 drive_group=0 is_spare=no state=Onln "
              "enclosure=252 slot=1 device_id=9 serial=S1\n"
              "volume_members c0_showall.txt 12: controller=0 drive_group=0 is_spare=no "
              "state=Failed enclosure=252 slot=2 device_id=10 serial=S2\n"
              "volume_members c1_showall.txt 11: controller=1 drive_group=0 is_spare=no state=Onln "
              "enclosure=252 slot=1 device_id=9\n");
    ASSERT_FALSE(found.drives[0].elsewhere.empty());
    EXPECT_EQ(found.drives[0].elsewhere[0].field, "media_errors");
    EXPECT_EQ(found.drives[0].elsewhere[0].place, (Place{"c0_pdlist.txt", 6}));
}

TEST(Join, the_order_of_captures_changes_no_place) {
    const auto answer =
        "Controller = 0\nStatus = Success\nDescription = None\n" + details("/c0/e252/s1", "S1");
    const auto found = joined({{"c0_pdlist.txt", answer}, {"c0_showall.txt", list("0", kOnline)}});
    ASSERT_EQ(found.drives.size(), 1U);
    EXPECT_EQ(found.drives[0].place, (Place{"c0_showall.txt", 11}));
}

TEST(Join, details_that_end_early_are_a_gap) {
    joined({{"c0_showall.txt", list("0", kOnline + kFailed)},
            {"pdlist.txt", "Controller = 0\nStatus = Success\nDescription = None\n" +
                               details("/c0/e252/s1", "S1")}},
           1);
}

TEST(Join, numbers_of_two_tools_are_not_the_same) {
    const auto found = joined({
        {"c1_showall.txt", list("1", kOnline)},
        {"host_arcconf_1.txt",
         "Controllers found: 1\nPhysical Device information\n Device #0\n"
         "  Device is a Hard drive\n  State : Online\n"
         "  Reported Location : Enclosure 252, Slot 1\nCommand completed successfully.\n"},
    });
    EXPECT_EQ(found.drives.size(), 2U);
}

// A list and the configuration tell the same state; the troubles of the one are not lost to the other.
TEST(Join, troubles_behind_a_state_stay) {
    const Named list = {
        "host_arcconf_list.txt",
        "Controllers found: 1\n---------\nController information\n---------\n"
        "   Controller ID             : Status, Slot, Mode, Name, SerialNumber, WWN\n"
        "---------\n   Controller 1:             : Optimal, Slot 16, Mixed, EX1, A1, 50000D\n"
        "\nCommand completed successfully.\n"};
    const Named configuration = {
        "host_arcconf_1.txt",
        "Controllers found: 1\n---------\nController information\n---------\n"
        "   Controller Status : Optimal\n   Temperature : 110 C/ 230 F (Abnormal)\n"
        "\nCommand completed successfully.\n"};
    for (const bool is_list_first : {true, false}) {
        const auto found =
            is_list_first ? joined({list, configuration}) : joined({configuration, list});
        ASSERT_EQ(found.controllers.size(), 1U);
        const auto& controller = found.controllers[0];
        EXPECT_EQ(controller.status, "Optimal, temperature: 110 C/ 230 F (Abnormal)");
        EXPECT_EQ(controller.place, (Place{"host_arcconf_1.txt", 5}));
        ASSERT_EQ(controller.elsewhere.size(), 1U);
        EXPECT_EQ(controller.elsewhere[0].place, (Place{"host_arcconf_1.txt", 6}));
        EXPECT_EQ(controller.serial, "A1");
    }
}

// A summary has another word for the same state, and none of the troubles.
TEST(Join, troubles_stand_with_the_state_of_another_capture) {
    const Named list = {
        "c0_showall.txt",
        "Controller = 0\nStatus = Success\nDescription = None\n\nModel = X\n"
        "Controller Status = Optimal\nPhysical Drives = 0\n\nCachevault_Info :\n======\n\n"
        "-----------------------------------\nModel  State   Temp Mode MfgDate    \n"
        "-----------------------------------\nCVPM02 Optimal 28C  -    2018/05/30 \n"
        "-----------------------------------\n"};
    const Named details = {
        "host_storcli_c0_cv.txt",
        "Controller = 0\nStatus = Success\nDescription = None\n\nCachevault_Info :\n======\n\n"
        "--------------------\nProperty    Value   \n--------------------\n"
        "Type        CVPM02  \nState       Optl    \n--------------------\n\n"
        "Firmware_Status :\n======\n\n"
        "----------------------------\nProperty             Value \n"
        "----------------------------\nReplacement required Yes   \n"
        "----------------------------\n"};
    const auto found = joined({list, details});
    ASSERT_EQ(found.batteries.size(), 1U);
    EXPECT_EQ(found.batteries[0].state, "Optimal, Replacement required");
    ASSERT_EQ(found.batteries[0].elsewhere.size(), 1U);
    EXPECT_EQ(found.batteries[0].elsewhere[0].place, (Place{"host_storcli_c0_cv.txt", 21}));
}

// The kernel has no word for an array that lacks too many members, and mdadm has.
TEST(Join, mdadm_says_that_an_array_failed) {
    const Named kernel = {
        "host_mdstat.txt",
        "Personalities : [raid10]\nmd0 : active raid10 sdb1[1](F) sda1[0](F) sdc1[2] sdd1[3]\n"
        "      1046528 blocks super 1.2 512K chunks 2 near-copies [4/2] [__UU]\n"
        "unused devices: <none>\n"};
    const Named mdadm = {
        "host_mdadm_md0.txt",
        "/dev/md0:\n    Raid Level : raid10\n         State : clean, FAILED, checking\n"
        "  Check Status : 5% complete\n"
        "    Number   Major   Minor   RaidDevice State\n"
        "       2       8       33        2      active sync   /dev/sdc1\n"};
    for (const bool is_kernel_first : {true, false}) {
        const auto found = is_kernel_first ? joined({kernel, mdadm}) : joined({mdadm, kernel});
        ASSERT_EQ(found.volumes.size(), 1U);
        const auto& volume = found.volumes[0];
        EXPECT_EQ(volume.state, "clean, FAILED, checking");
        EXPECT_EQ(volume.place, (Place{"host_mdadm_md0.txt", 3}));
        ASSERT_EQ(volume.elsewhere.size(), 1U);
        EXPECT_EQ(volume.elsewhere[0].field, "operation");
        EXPECT_EQ(volume.elsewhere[0].place, (Place{"host_mdadm_md0.txt", 4}));
    }
}

TEST(Join, two_serial_numbers_are_two_drives) {
    const auto head = std::string("Controller = 0\nStatus = Success\nDescription = None\n");
    const auto found = joined({{"c0_pdlist.txt", head + details("/c0/e1/s1", "S1")},
                               {"pdlist.txt", head + details("/c0/e1/s1", "S2")}});
    EXPECT_EQ(found.drives.size(), 2U);
}

TEST(Join, a_serial_number_that_was_cut_off_is_no_other_drive) {
    const auto head = std::string("Controller = 0\nStatus = Success\nDescription = None\n");
    const auto whole = head + details("/c0/e1/s1", "U9Z0SUNY");
    const auto cut = whole.substr(0, whole.find("SUNY"));
    for (const auto& captures :
         {std::vector<Named>{{"c0_pdlist.txt", cut}, {"pdlist.txt", whole}},
          std::vector<Named>{{"c0_pdlist.txt", whole}, {"pdlist.txt", cut}}}) {
        const auto found = joined(captures);
        ASSERT_EQ(found.drives.size(), 1U);
        EXPECT_EQ(found.drives[0].serial, "U9Z0SUNY");
        EXPECT_EQ(found.drives[0].firmware, "A");
    }
}

TEST(Join, what_the_system_sees_is_found_behind_controllers) {
    const auto answer = "Controller = 0\nStatus = Success\nDescription = None\n" +
                        details("/c0/e252/s1", "Z1X00000");
    const auto found = joined({
        {"c0_showall.txt", list("0", kOnline)},
        {"pdlist.txt", answer},
        {"host_mdstat.txt",
         "Personalities : [raid1]\nmd0 : active raid1 sdc1[1](F) sdb1[0]\n"
         "      8 blocks [2/1] [U_]\nunused devices: <none>\n"},
        {"host_mdadm_md0.txt",
         "/dev/md0:\n Raid Level : raid1\n State : clean, degraded\n"
         "    Number   Major   Minor   RaidDevice State\n"
         "       0       8       17        0      active sync   /dev/sdb1\n"
         "       -       0        0        1      removed\n"
         "       1       8       33        -      faulty   /dev/sdc1\n"},
        {"host_smartctl_sdc.json",
         R"({"smartctl": {"exit_status": 0}, "device": {"name": "/dev/sdc", "protocol": "ATA"},
             "serial_number": "C1", "smart_status": {"passed": true}})"},
        {"host_lsblk.json",
         R"({"blockdevices": [
             {"name": "sdb", "type": "disk", "serial": "Z1X00000000099", "tran": "sas"},
             {"name": "sdc", "type": "disk", "serial": "C1", "wwn": "0x5", "tran": "sata"},
             {"name": "sdd", "type": "disk", "serial": "0062", "tran": null}]})"},
    });
    EXPECT_EQ(describe(found, true),
              "volumes host_mdstat.txt 3: raid=raid1 state=active, sdc1 faulty, degraded [U_] "
              "capacity_bytes=8192 name=md0 device=/dev/md0\n"
              "drives c0_showall.txt 11: controller=0 enclosure=252 slot=1 device_id=9 state=Onln "
              "drive_group=0 is_foreign=no capacity_bytes=998998655631 interface=SATA media=HDD "
              "sector_bytes=512 model=EX1000 LONG serial=Z1X00000 firmware=A device=/dev/sdb "
              "media_errors=2 smart_alert=no\n"
              "drives host_mdstat.txt 2: state=faulty interface=SATA serial=C1 wwn=5 "
              "device=/dev/sdc smart_alert=no\n"
              "volume_members host_mdstat.txt 2: volume_name=md0 is_spare=no state=faulty "
              "device=/dev/sdc serial=C1\n"
              "volume_members host_mdadm_md0.txt 5: volume_name=md0 position=0 is_spare=no "
              "state=active sync device=/dev/sdb serial=Z1X00000\n"
              "volume_members host_mdadm_md0.txt 6: volume_name=md0 position=1 is_spare=no "
              "state=removed\n"
              "volume_members c0_showall.txt 11: controller=0 drive_group=0 is_spare=no state=Onln "
              "enclosure=252 slot=1 device_id=9 device=/dev/sdb serial=Z1X00000\n");
}

TEST(Join, the_drives_of_a_group_make_each_of_its_volumes) {
    const auto found = joined({
        {"c0_showall.txt",
         "Controller = 0\nStatus = Success\nDescription = None\n\nTOPOLOGY :\n========\n\n"
         "------------------------------------------\n"
         "DG Arr Row EID:Slot DID Type  State       \n"
         "------------------------------------------\n"
         " 0 -   -   -        -   RAID1 Dgrd        \n"
         " 0 0   -   -        -   RAID1 Dgrd        \n"
         " 0 0   0   252:1    9   DRIVE Onln        \n"
         " 0 0   1   -        -   DRIVE Msng        \n"
         " 0 -   -   252:3    11  DRIVE DHS         \n"
         " - -   -   252:4    12  DRIVE GHS         \n"
         "------------------------------------------\n\n"
         "VD LIST :\n=======\n\n"
         "---------------------------\n"
         "DG/VD TYPE  State Name     \n"
         "---------------------------\n"
         "0/0   RAID1 Dgrd  system   \n"
         "0/5   RAID1 Dgrd           \n"
         "---------------------------\n"},
        {"c0_pdlist.txt",
         "Controller = 0\nStatus = Success\nDescription = None\n" + details("/c0/e252/s1", "S1")},
    });
    std::string members;
    std::istringstream lines(describe(found, true));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("volume_members")) members += line + "\n";
    }
    EXPECT_EQ(members,
              "volume_members c0_showall.txt 13: controller=0 drive_group=0 volume=0 "
              "volume_name=system span=0 position=0 is_spare=no state=Onln enclosure=252 slot=1 "
              "device_id=9 serial=S1\n"
              "volume_members c0_showall.txt 13: controller=0 drive_group=0 volume=5 span=0 "
              "position=0 is_spare=no state=Onln enclosure=252 slot=1 device_id=9 serial=S1\n"
              "volume_members c0_showall.txt 14: controller=0 drive_group=0 volume=0 "
              "volume_name=system span=0 position=1 is_spare=no state=Msng\n"
              "volume_members c0_showall.txt 14: controller=0 drive_group=0 volume=5 span=0 "
              "position=1 is_spare=no state=Msng\n"
              "volume_members c0_showall.txt 15: controller=0 drive_group=0 volume=0 "
              "volume_name=system is_spare=yes state=DHS enclosure=252 slot=3 device_id=11\n"
              "volume_members c0_showall.txt 15: controller=0 drive_group=0 volume=5 "
              "is_spare=yes state=DHS enclosure=252 slot=3 device_id=11\n"
              "volume_members c0_showall.txt 16: controller=0 is_spare=yes state=GHS "
              "enclosure=252 slot=4 device_id=12\n");
    // Only the first one's drive is listed.
    std::vector<bool> listed;
    for (const auto& member : found.volume_members) listed.push_back(member.drive.has_value());
    EXPECT_EQ(listed, (std::vector<bool>{true, true, false, false, false, false, false}));
}

// A number that is nobody's, another tool's controller and another serial number in the same slot.
TEST(Join, a_member_is_no_drive_that_only_looks_alike) {
    const auto found = joined({
        {"c1_showall.txt", list("1", "252:1     9 UGood  - 930.390 GB SATA HDD 512B EX1000  \n")},
        {"host_arcconf_1.txt",
         "Controllers found: 1\nLogical device number 0\n Logical device name : data\n"
         " Status of Logical Device : Degraded\n----\n Logical device segment information\n----\n"
         " Segment 0 : Missing (Enclosure:252, Slot:1) OLD1\n"
         " Segment 1 : Present (Enclosure:252, Slot:2) D2\n"
         "Physical Device information\n Device #0\n  Device is a Hard drive\n  State : Ready\n"
         "  Serial number : NEW1\n  Reported Location : Enclosure 252, Slot 1\n"
         "Command completed successfully.\n"},
    });
    ASSERT_EQ(found.volume_members.size(), 2U) << describe(found);
    for (const auto& member : found.volume_members) {
        EXPECT_FALSE(member.drive) << *member.serial;
        EXPECT_EQ(member.volume_name, "data");
    }
}

TEST(StorageCaptures, are_found_by_name) {
    const auto name_of = [](const char* capture) {
        const auto* const row = reader_for(storage_captures(), capture);
        return std::string(row ? row->pattern : "none");
    };
    EXPECT_EQ(name_of("c0_showall.txt"), "c*_showall.txt");
    EXPECT_EQ(name_of("c12_raidevents.txt"), "c*_raidevents.txt");
    EXPECT_EQ(name_of("Firmware/Controller 1 Config.txt"), "Firmware/Controller * Config.txt");
    EXPECT_EQ(name_of("host_arcconf_list.txt"), "host_arcconf_list.txt");
    EXPECT_EQ(name_of("host_smartctl_scan.json"), "host_smartctl_scan.json");
    EXPECT_EQ(name_of("host_smartctl_nvme0.json"), "host_smartctl_*.json");
    for (const auto* other :
         {"", "c_showall.txt", "c0_showall.txt.old", "c0/x_showall.txt", "dmesg.txt"})
        EXPECT_EQ(name_of(other), "none") << other;
}

TEST(StorageCaptures, name_gives_the_controller_of_events) {
    std::vector<Event> events;
    Inventory found;
    for (const std::string name : {"c3_raidevents.txt", "raidevents.txt"}) {
        CaptureLines lines("Class: 0\nEvent Description: A\n");
        Reading reading{name, found, [&](Event&& event) { events.push_back(event); }, {}};
        reader_for(storage_captures(), name)->read(lines, reading);
    }
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].source, "controller 3");
    EXPECT_EQ(events[1].source, "controller 0");
}

// No capture, cut or mixed up, ends a reader other than by returning, and one that holds something is not taken for
// a whole one.
TEST(StorageCaptures, readers_stand_any_text) {
    constexpr std::string_view kLetters = "{}[]\":=-|,/ 0129\n\r\tcevsPDG%";
    std::string noise;
    std::uint32_t state = 1;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1664525U + 1013904223U;
        noise += kLetters[(state >> 24) % kLetters.size()];
    }
    const std::string texts[] = {
        "",   "\n", "{", std::string(1, '\0'), std::string(200000, ' '), std::string(200000, '-'),
        noise};
    for (const auto& capture : storage_captures()) {
        for (const auto& text : texts) {
            Inventory found;
            CaptureLines lines(text);
            Reading reading{capture.pattern, found, [](Event&&) {}, {}};
            capture.read(lines, reading);
            join_storage(found);
            if (text.find_first_not_of(" \n") == std::string::npos) continue;
            EXPECT_TRUE(!reading.how.whole() || reading.how.not_understood > 0)
                << capture.pattern << ": " << text.substr(0, 20);
        }
    }
}

}  // namespace
}  // namespace qvhost::inventory
