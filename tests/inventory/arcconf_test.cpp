#include "inventory/storage/arcconf.h"

#include <gtest/gtest.h>

#include <sstream>

#include "captures_beside.h"
#include "describe.h"

namespace qvhost::inventory {
namespace {

void read_first(CaptureLines& lines, Reading& reading) { read_arcconf(lines, reading, 1); }
void read_unknown(CaptureLines& lines, Reading& reading) {
    read_arcconf(lines, reading, std::nullopt);
}

// An older build, with spares and a backup unit.
const std::string kConfig = R"(Controllers found: 1
----------------------------------------------------------------------
Controller information
----------------------------------------------------------------------
   Controller Status                        : Optimal
   Controller Model                         : Adaptec ASR7805
   Controller Serial Number                 : EXA00000001
   Temperature                              : 81 C/ 177 F (Normal)
   Logical devices/Failed/Degraded          : 2/0/1
   --------------------------------------------------------
   Controller Version Information
   --------------------------------------------------------
   BIOS                                     : 7.5-0 (32033)
   Firmware                                 : 7.5-0 (32033)
   Driver                                   : 1.2-1 (40709)

   --------------------------------------------------------
   Controller Cache Backup Unit Information
   --------------------------------------------------------

    Overall Backup Unit Status              : Ready

         Backup Unit Type                   : AFM-700/700LP
         Supercap Status                    : Ready

         -----------------------------------
         Supercap Information
         -----------------------------------
         Current Temperature                : 27 deg C
         Charge Level                       : 98 percent

----------------------------------------------------------------------
Logical device information
----------------------------------------------------------------------
Logical device number 0
   Logical device name                      : system
   RAID level                               : 1
   Status of logical device                 : Optimal
   Size                                     : 228352 MB
   MaxCache read cache setting              : Disabled
   Write-cache status                       : On
   Failed stripes                           : No
   --------------------------------------------------------
   Logical device segment information
   --------------------------------------------------------
   Segment 0                                : Present (Controller:1,Enclosure:0,Slot:0)      EXD00000001
   Segment 1                                : Missing (Controller:1,Enclosure:0,Slot:1)      EXD00000002

Logical device number 1
   Logical device name                      : archive
   RAID level                               : 6 Reed-Solomon
   Status of logical device                 : Impacted ( Build/Verify with fix : 90 % )
   Size                                     : 7628800 MB
   Write-cache mode                         : Disabled (write-through)
   Failed stripes                           : Yes

----------------------------------------------------------------------
Physical Device information
----------------------------------------------------------------------
      Device #0
         Device is a Hard drive
         State                              : Online
         Block Size                         : 512 Bytes
         Transfer Speed                     : SATA 6.0 Gb/s
         Reported Channel,Device(T:L)       : 0,7(7:0)
         Reported Location                  : Enclosure 0, Slot 2(Connector 0)
         Vendor                             : ATA
         Model                              : EXM SSDA240G2
         Firmware                           : EX11
         Serial number                      : EXD00000001
         World-wide name                    : 50000D1100000100
         Total Size                         : 228936 MB
         S.M.A.R.T.                         : No
         S.M.A.R.T. warnings                : 0
         SSD                                : Yes
         Temperature                        : Not Supported
      ----------------------------------------------------------------
      Runtime Error Counters
      ----------------------------------------------------------------
         Hardware Error Count               : 1
         Medium Error Count                 : 3

      Device #1
         Device is a Hard drive
         State                              : Dedicated Hot-Spare
         Reported Location                  : Connector 0, Device 3
         Serial number                      : EXD00000002
         Size                               : 3815447 MB
         S.M.A.R.T.                         : Yes
         Temperature                        : 41 C/ 105 F
      Device #2
         Device is an Enclosure Services Device
         Enclosure ID                       : 0
         Model                              : AEC-82885T
         Status of Enclosure Services Device
            Power supply 1 status           : Optimal
            Power supply 2 status           : Failed


Command completed successfully.
)";

const char* const kConfigured =
    "controllers 5: number=1 model=Adaptec ASR7805 serial=EXA00000001 firmware=7.5-0 (32033) "
    "status=Optimal volumes=2\n"
    "batteries 21: controller=1 model=AFM-700/700LP state=Ready charge_percent=98 "
    "temperature_celsius=27\n"
    "enclosures 97: controller=1 number=0 state=power supply 2 status: Failed model=AEC-82885T\n"
    "volumes 35: controller=1 number=0 raid=1 state=Optimal cache=On capacity_bytes=239444426752 "
    "name=system\n"
    "volumes 49: controller=1 number=1 raid=6 Reed-Solomon state=Impacted, failed stripes: Yes consistent=no "
    "cache=Disabled (write-through) capacity_bytes=7999376588800 name=archive "
    "operation=Build/Verify with fix progress_percent=90\n"
    "drives 62: controller=1 enclosure=0 slot=2 device_id=7 state=Online "
    "capacity_bytes=240056795136 interface=SATA media=SSD sector_bytes=512 model=EXM SSDA240G2 "
    "serial=EXD00000001 wwn=50000D1100000100 firmware=EX11 media_errors=3 other_errors=1 "
    "predicted_failures=0 smart_alert=no\n"
    "drives 85: controller=1 state=Dedicated Hot-Spare spare=dedicated "
    "capacity_bytes=4000786153472 serial=EXD00000002 temperature_celsius=41 smart_alert=yes\n"
    "volume_members 46: controller=1 volume=0 position=0 is_spare=no state=Present enclosure=0 slot=0 "
    "serial=EXD00000001\n"
    "volume_members 47: controller=1 volume=0 position=1 is_spare=no state=Missing enclosure=0 slot=1 "
    "serial=EXD00000002\n"
    "controller_count 1: tool=arcconf count=1\n";

TEST(Arcconf, reads_a_configuration) {
    const auto read = read_text(read_first, kConfig);
    EXPECT_EQ(describe(read.found), kConfigured);
    EXPECT_EQ(describe(read.how), "100 lines\n");
    std::string crlf;
    for (const char c : kConfig) crlf += c == '\n' ? "\r\n" : std::string(1, c);
    EXPECT_EQ(describe(read_text(read_unknown, "warning: x\n" + crlf + "y\n").found).substr(0, 14),
              "controllers 6:");
}

TEST(Arcconf, a_text_that_is_cut_is_not_whole) {
    const auto end = kConfig.find("Command completed successfully");
    for (std::size_t size = 0; size < end; ++size)
        EXPECT_FALSE(read_text(read_first, kConfig.substr(0, size)).how.whole()) << size;
}

// A newer build: other capitals, arrays, device names.
TEST(Arcconf, reads_other_answers) {
    struct Case {
        const char* text;
        const char* found;
        const char* how;
    };
    const Case cases[] = {
        {"Controllers found: 1\n--------------\nLogical device information\n--------------\n"
         "Logical Device number 2\n   Logical Device name    : data\n   Disk Name              : "
         "/dev/sdc (Disk0) (Bus: 1, Target: 0, Lun: 2)\n   Array                  : 1\n"
         "   RAID level             : 10\n   Status of Logical Device : Degraded\n"
         "   Size                   : 100 MB\n   Caching                : Enabled\n"
         "--------------\n   Array Physical Device Information\n--------------\n"
         "   Device ID   : Availability (SizeMB, Protocol, Type, Connector ID, Location) Serial\n"
         "--------------\n"
         "   Device 3    : Present (572325MB, SAS, HDD, Connector:CN2, Backplane:0, Slot:1) 63M0\n"
         "\nCommand completed successfully.\n",
         "volumes 5: controller=1 drive_group=1 number=2 raid=10 state=Degraded cache=Enabled "
         "capacity_bytes=104857600 name=data device=/dev/sdc\n"
         "volume_members 18: controller=1 drive_group=1 volume=2 is_spare=no state=Present "
         "enclosure=0 slot=1 device_id=3 serial=63M0\n"
         "controller_count 1: tool=arcconf count=1\n",
         "20 lines\n"},
        {"Controllers found: 1\nLogical device Task:\n   Logical device  : 0\n   Task ID  : 102\n"
         "   Current operation  : Rebuild\n   Status  : In Progress\n   Percentage complete  : 3\n"
         "\nCommand completed successfully.\n",
         "volumes 2: controller=1 number=0 operation=Rebuild progress_percent=3\n"
         "controller_count 1: tool=arcconf count=1\n",
         "9 lines\n"},
        {"Controllers found: 2\n---------\nController information\n---------\n"
         "   Controller ID             : Status, Slot, Mode, Name, SerialNumber, WWN\n---------\n"
         "   Controller 1:             : Optimal, Slot 16, Mixed, Example M1, 16D, 3137F, 50000D\n"
         "   Controller 2:             : Failed, Slot 9, HBA, Example, A312, 50000X\n"
         "\nCommand completed successfully.\n",
         "controllers 7: number=1 model=Example M1, 16D serial=3137F status=Optimal\n"
         "controllers 8: number=2 model=Example serial=A312 status=Failed\n"
         "controller_count 1: tool=arcconf count=2\n",
         "10 lines\n"},
        {"Controllers found: 1\nThe requested feature is not supported.\n\nCommand aborted.\n",
         "controller_count 1: tool=arcconf count=1\n",
         "4 lines, 1 not understood (2)\nerror 4: The requested feature is not supported.\n"},
        {"Controllers found: 1\n--------\nLogical device information\n--------\n"
         "   No logical devices configured\n\nCommand completed successfully.\n",
         "controller_count 1: tool=arcconf count=1\n", "7 lines\n"},
        {"Controllers found: 1\n--------\nPhysical Device information\n--------\n"
         "      Device #0\n         Device is a Hard drive\n         Total Size : much\n"
         "\nCommand completed successfully.\n",
         "drives 5: controller=1\ncontroller_count 1: tool=arcconf count=1\n",
         "9 lines\ngap 7: a value that cannot be read: total size\ngap 9: a drive without a "
         "state\n"},
        // Troubles that stand in no status.
        {"Controllers found: 1\n--------\nController information\n--------\n"
         "   Controller Status : Optimal\n   Temperature : 110 C/ 230 F (Abnormal)\n"
         "   --------\n   Green Backup Information\n   --------\n"
         "   Backup Power Status : Ok\n   Hardware Error : Capacitor short\n"
         "\nCommand completed successfully.\n",
         "controllers 5: number=1 status=Optimal, temperature: 110 C/ 230 F (Abnormal)\n"
         "batteries 10: controller=1 state=Ok, hardware error: Capacitor short\n"
         "controller_count 1: tool=arcconf count=1\n",
         "13 lines\n"},
        // The same above the status: the status still goes first.
        {"Controllers found: 1\n--------\nController information\n--------\n"
         "   Temperature : 110 C/ 230 F (Abnormal)\n   Controller Status : Failed\n"
         "   --------\n   Green Backup Information\n   --------\n"
         "   Hardware Error : Capacitor short\n   Backup Power Status : Failed\n"
         "--------\nLogical device information\n--------\n"
         "Logical device number 0\n   Failed stripes : Yes\n"
         "   Status of Logical Device : Degraded\n\nCommand completed successfully.\n",
         "controllers 6: number=1 status=Failed, temperature: 110 C/ 230 F (Abnormal)\n"
         "batteries 11: controller=1 state=Failed, hardware error: Capacitor short\n"
         "volumes 15: controller=1 number=0 state=Degraded, failed stripes: Yes consistent=no\n"
         "controller_count 1: tool=arcconf count=1\n",
         "19 lines\n"},
        // Each part of an enclosure that is not well.
        {"Controllers found: 1\n--------\nPhysical Device information\n--------\n"
         "      Device #2\n         Device is an Enclosure Services Device\n"
         "         Enclosure ID : 0\n         Status of Enclosure Services Device\n"
         "            Fan 1 status : 0 rpm (Not Supported)\n"
         "            Temperature Sensor Status 1 : 71 C/ 159 F (Abnormal)\n"
         "            Temperature Sensor Status 2 : 23 C/ 73 F (Normal)\n"
         "            Power supply 2 status : Failed\n\nCommand completed successfully.\n",
         "enclosures 10: controller=1 number=0 state=temperature sensor status 1: 71 C/ 159 F "
         "(Abnormal), power supply 2 status: Failed\n"
         "controller_count 1: tool=arcconf count=1\n",
         "14 lines\n"},
        // A part that tells no state, or in words that nobody knows.
        {"Controllers found: 1\n--------\nController information\n--------\n"
         "   Controller Status : Optimal\n"
         "   --------\n   Controller Battery Information\n   --------\n"
         "   Pack Condition : Failed\n\nCommand completed successfully.\n",
         "controllers 5: number=1 status=Optimal\n"
         "controller_count 1: tool=arcconf count=1\n",
         "11 lines\ngap 11: the state of the cache's backup is missing\n"},
        // Of several lines on the same the worse one counts.
        {"Controllers found: 1\n--------\nPhysical Device information\n--------\n"
         "      Device #0\n         Device is a Hard drive\n         State : Online\n"
         "         S.M.A.R.T. : No\n         S.M.A.R.T. warnings : 2\n"
         "         Current Temperature : 66 deg C\n         Threshold Temperature : 65 deg C\n"
         "         SMART Warning Count : 0\n"
         "         SSD Smart Trip Wearout : False\n         56 Day Warning Present : True\n"
         "\nCommand completed successfully.\n",
         "drives 7: controller=1 state=Online temperature_celsius=66 predicted_failures=2 "
         "smart_alert=yes\ncontroller_count 1: tool=arcconf count=1\n",
         "16 lines\n"},
        // The parts of a cache's backup.
        {"Controllers found: 1\n--------\nController information\n--------\n"
         "   Controller Status : Optimal\n"
         "   --------\n   Controller Cache Backup Unit Information\n   --------\n"
         "   Overall Backup Unit Status : Ready\n   Non-Volatile Storage Status : Ready\n"
         "   Supercap Status : Not Ready\n\nCommand completed successfully.\n",
         "controllers 5: number=1 status=Optimal\n"
         "batteries 9: controller=1 state=Ready, supercap status: Not Ready\n"
         "controller_count 1: tool=arcconf count=1\n",
         "13 lines\n"},
        {"Controllers found: 1\n--------\nController information\n--------\n"
         "   Controller Status : Optimal\n"
         "   --------\n   Controller Battery Information\n   --------\n"
         "   Status : Optimal\n   Over temperature : Yes\n\nCommand completed successfully.\n",
         "controllers 5: number=1 status=Optimal\n"
         "batteries 9: controller=1 state=Optimal, over temperature: Yes\n"
         "controller_count 1: tool=arcconf count=1\n",
         "12 lines\n"},
        // What a device of another kind says is not the drive's before it.
        {"Controllers found: 1\n--------\nPhysical Device information\n--------\n"
         "      Device #0\n         Device is a Hard drive\n         State : Online\n"
         "         Device is a Processor\n         State : Failed\n         Total Size : 1 MB\n"
         "\nCommand completed successfully.\n",
         "drives 7: controller=1 state=Online\ncontroller_count 1: tool=arcconf count=1\n",
         "12 lines\n"},
    };
    for (const auto& c : cases) {
        const auto read = read_text(read_unknown, c.text);
        EXPECT_EQ(describe(read.found), c.found);
        EXPECT_EQ(describe(read.how), c.how);
    }
}

// Each word of a state, and the line that says it.
TEST(Arcconf, words_of_a_state_have_their_own_lines) {
    const auto read = read_text(
        read_unknown,
        "Controllers found: 1\n--------\nController information\n--------\n"
        "   Temperature : 110 C/ 230 F (Abnormal)\n   Controller Status : Failed\n"
        "   --------\n   Green Backup Information\n   --------\n"
        "   Overall Backup Unit Status : Failed\n   Hardware Error : Capacitor short\n"
        "   Backup Power Status : Ok\n"
        "--------\nLogical device information\n--------\n"
        "Logical device number 0\n   Failed stripes : Yes\n   Status of Logical Device : Degraded\n"
        "--------\nPhysical Device information\n--------\n"
        "      Device #0\n         Device is a Hard drive\n"
        "         Temperature : 71 C/ 159 F (Abnormal)\n         State : Failed\n"
        "      Device #2\n         Device is an Enclosure Services Device\n"
        "            Temperature Sensor Status 1 : 71 C/ 159 F (Abnormal)\n"
        "            Power supply 2 status : Failed\n\nCommand completed successfully.\n");
    const auto told = [](const auto& entity) {
        std::string text = std::to_string(entity.place.line);
        for (const auto& [words, place] : entity.elsewhere)
            text += "|" + std::to_string(place.line) + " " + words;
        return text;
    };
    EXPECT_EQ(told(read.found.controllers.at(0)), "6|5 temperature: 110 C/ 230 F (Abnormal)");
    EXPECT_EQ(told(read.found.batteries.at(0)),
              "12|10 Failed|11 hardware error: Capacitor short|12 Ok");
    EXPECT_EQ(told(read.found.volumes.at(0)), "16|17 failed stripes: Yes|18 state|18 operation");
    EXPECT_EQ(told(read.found.drives.at(0)), "25|24 temperature_celsius");
    EXPECT_EQ(read.found.drives.at(0).temperature_state, "(Abnormal)");
    EXPECT_EQ(
        told(read.found.enclosures.at(0)),
        "28|28 temperature sensor status 1: 71 C/ 159 F (Abnormal)|29 power supply 2 status: Failed");
}

TEST(Arcconf, a_drive_names_the_line_that_tells_more) {
    const auto read = read_text(
        read_unknown,
        "Controllers found: 1\n--------\nPhysical Device information\n--------\n"
        "      Device #0\n         Device is a Hard drive\n         State : Online\n"
        "         S.M.A.R.T. : No\n         S.M.A.R.T. warnings : 0\n"
        "         SMART Warning Count : 6\n         56 Day Warning Present : True\n"
        "         Current Temperature : 66 deg C\n         Threshold Temperature : 65 deg C\n"
        "\nCommand completed successfully.\n");
    const auto& drive = read.found.drives.at(0);
    EXPECT_EQ(place_of(drive, "predicted_failures").line, 10);
    EXPECT_EQ(place_of(drive, "smart_alert").line, 11);
    EXPECT_EQ(drive.temperature_state, "above its threshold, 65 deg C");
}

// The value behind the only key of a line that begins so, whatever stands around it.
std::vector<std::string> values(const std::string& text, const std::string& key, int indent) {
    std::vector<std::string> found;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
        const auto begin = line.find_first_not_of(' ');
        if (begin == std::string::npos ||
            (indent >= 0 && begin != static_cast<std::size_t>(indent)))
            continue;
        if (line.compare(begin, key.size(), key) != 0) continue;
        const auto colon = line.find(" : ");
        if (colon == std::string::npos ||
            line.find_first_not_of(' ', begin + key.size()) != colon + 1)
            continue;
        found.push_back(line.substr(colon + 3));
    }
    return found;
}

TEST(Arcconf, agrees_with_a_naive_reading_of_captures) {
    const auto captures = captures_of("arcconf");
    if (captures.empty()) GTEST_SKIP() << "no captures beside the repository";
    std::size_t drives = 0;
    for (const auto& [name, text] : captures) {
        const auto read = read_text(read_unknown, text);
        std::vector<std::string> states, serials, sizes, volumes;
        for (const auto& drive : read.found.drives) {
            states.push_back(drive.state.value_or(""));
            if (drive.serial) serials.push_back(*drive.serial);
            sizes.push_back(std::to_string(drive.capacity_bytes.value_or(0) >> 20) + " MB");
        }
        for (const auto& volume : read.found.volumes) {
            if (volume.state) volumes.push_back(*volume.state);
        }
        drives += states.size();
        EXPECT_EQ(states, values(text, "State", 9)) << name;
        auto wanted = values(text, "Serial number", 9);
        if (wanted.empty()) wanted = values(text, "Serial Number", 9);
        // Some were blotted out by those who published them.
        std::erase_if(wanted, [](const std::string& serial) {
            return serial.find_first_not_of("*X") == std::string::npos;
        });
        EXPECT_EQ(serials, wanted) << name;
        auto wanted_sizes = values(text, "Total Size", 9);
        if (wanted_sizes.empty()) wanted_sizes = values(text, "Size", 9);
        EXPECT_EQ(sizes, wanted_sizes) << name;
        auto wanted_volumes = values(text, "Status of logical device", 3);
        if (wanted_volumes.empty()) wanted_volumes = values(text, "Status of Logical Device", 3);
        for (auto& state : wanted_volumes) {
            if (const auto at = state.find(" ("); at != std::string::npos) state.resize(at);
        }
        EXPECT_EQ(volumes, wanted_volumes) << name;
    }
    EXPECT_GT(drives, 150U);
}

}  // namespace
}  // namespace qvhost::inventory
