#include "inventory/storage/join.h"

#include <gtest/gtest.h>

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
              "sector_bytes=512 model=EX1000\n");
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

TEST(Join, two_serial_numbers_are_two_drives) {
    const auto head = std::string("Controller = 0\nStatus = Success\nDescription = None\n");
    const auto found = joined({{"c0_pdlist.txt", head + details("/c0/e1/s1", "S1")},
                               {"pdlist.txt", head + details("/c0/e1/s1", "S2")}});
    EXPECT_EQ(found.drives.size(), 2U);
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
         "    Number   Major   Minor   RaidDevice State\n"},
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
              "device=/dev/sdc smart_alert=no\n");
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

// No capture, cut or mixed up, ends a reader other than by returning.
TEST(StorageCaptures, readers_stand_any_text) {
    std::string noise;
    std::uint32_t state = 1;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1664525U + 1013904223U;
        noise += "{}[]\":=-|,/ 0129\n\r\tcevsPDG%"[state >> 24 & 31U % 28U];
    }
    const std::string texts[] = {
        "",   "\n", "{", std::string(1, '\0'), std::string(200000, ' '), std::string(200000, '-'),
        noise};
    for (const auto& capture : storage_captures()) {
        for (const auto& text : texts) {
            Inventory found;
            CaptureLines lines(text);
            Reading reading{capture.pattern, found, {}, {}};
            capture.read(lines, reading);
            join_storage(found);
        }
    }
}

}  // namespace
}  // namespace qvhost::inventory
