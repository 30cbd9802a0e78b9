#include "inventory/storage/storcli.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "captures_beside.h"
#include "describe.h"
#include "inventory/storage/join.h"

namespace qvhost::inventory {
namespace {

const std::string kShow =
    R"(Generating detailed summary of the adapter, it may take a while to complete.

CLI Version = 007.1211.0000.0000 Nov 07, 2019
Operating system = Linux 5.14.21
Controller = 1
Status = Success
Description = None

Product Name = Example 9361-8i
Serial Number = EXC0000001
System Time = 11/18/2026 10:42:16
Controller Time = 11/18/2026 10:42:14
FW Version = 4.680.00-8465
Function Number = 0
Drive Groups = 1

TOPOLOGY :
========

-----------------------------------------------------------------------------
DG Arr Row EID:Slot DID Type  State BT       Size PDC  PI SED DS3  FSpace TR
-----------------------------------------------------------------------------
 0 -   -   -        -   RAID1 Dgrd  N  930.390 GB dflt N  N   dflt N      N
 0 0   -   -        -   RAID1 Dgrd  N  930.390 GB dflt N  N   dflt N      N
 0 0   0   252:1    9   DRIVE Onln  N  930.390 GB dflt N  N   dflt -      N
 0 0   1   -        -   DRIVE Msng  -  930.390 GB -    -  -   -    N      N
-----------------------------------------------------------------------------

DG=Disk Group Index|Arr=Array Index|Row=Row Index|EID=Enclosure Device ID
TR=Transport Ready

Virtual Drives = 2

VD LIST :
=======

----------------------------------------------------------------
DG/VD TYPE  State Access Consist Cache Cac sCC       Size Name
----------------------------------------------------------------
0/0   RAID1 Dgrd  RW     Yes     NRWTD -   OFF 500.000 GB my data
0/1   RAID1 Dgrd  RW     No      NRWTD -   OFF 430.390 GB
----------------------------------------------------------------

Cac=CacheCade|Rec=Recovery|OfLn=OffLine|sCC=Scheduled
Check Consistency

Physical Drives = 4

PD LIST :
=======

------------------------------------------------------------------------------
EID:Slt DID State DG       Size Intf Med SED PI SeSz Model            Sp Type
------------------------------------------------------------------------------
252:1     9 Onln   0 930.390 GB SATA HDD N   N  512B EX1000 NM 0023   U  -
252:2    10 UGood  F   1.818 TB SAS  SSD N   N  4 KB EXSSD2000        U  -
252:3    11 GHS    - 930.390 GB SATA HDD N   N  512B EX1000 NM 0023   D  -
 :5      12 UBad   -        0 KB SATA HDD N   N  512B                  U  -
------------------------------------------------------------------------------

EID=Enclosure Device ID|Slt=Slot No.|DID=Device ID|DG=DriveGroup
UBUnsp=UBad Unsupported|Rbld=Rebuild

)";

const char* const kShown =
    "controllers 9: number=1 model=Example 9361-8i serial=EXC0000001 firmware=4.680.00-8465 "
    "volumes=2 drives=4\n"
    "volumes 40: controller=1 drive_group=0 number=0 raid=RAID1 state=Dgrd access=RW consistent=yes "
    "cache=NRWTD capacity_bytes=536870912000 name=my data\n"
    "volumes 41: controller=1 drive_group=0 number=1 raid=RAID1 state=Dgrd access=RW consistent=no "
    "cache=NRWTD capacity_bytes=462127743631\n"
    "drives 55: controller=1 enclosure=252 slot=1 device_id=9 state=Onln drive_group=0 "
    "is_foreign=no capacity_bytes=998998655631 interface=SATA media=HDD sector_bytes=512 "
    "model=EX1000 NM 0023\n"
    "drives 56: controller=1 enclosure=252 slot=2 device_id=10 state=UGood is_foreign=yes "
    "capacity_bytes=1998912139297 interface=SAS media=SSD sector_bytes=4096 model=EXSSD2000\n"
    "drives 57: controller=1 enclosure=252 slot=3 device_id=11 state=GHS is_foreign=no spare=global "
    "capacity_bytes=998998655631 interface=SATA media=HDD sector_bytes=512 model=EX1000 NM 0023\n"
    "drives 58: controller=1 slot=5 device_id=12 state=UBad is_foreign=no capacity_bytes=0 "
    "interface=SATA media=HDD sector_bytes=512\n"
    "volume_members 25: controller=1 drive_group=0 span=0 position=0 is_spare=no state=Onln "
    "enclosure=252 slot=1 device_id=9\n"
    "volume_members 26: controller=1 drive_group=0 span=0 position=1 is_spare=no state=Msng\n"
    "topology 23: controller=1 drive_group=0 type=RAID1 state=Dgrd\n"
    "topology 24: controller=1 drive_group=0 array=0 type=RAID1 state=Dgrd\n"
    "clock 12: controller 1 time=2026-11-18T10:42:14 system_time=2026-11-18T10:42:16\n";

std::string details_of(const std::string& drive, const std::string& serial,
                       const std::string& errors, const std::string& alert) {
    const auto head = "Drive " + drive;
    return head + " - Detailed Information :\n========================================\n\n" + head +
           " State :\n=======================\nShield Counter = 2\nMedia Error Count = " + errors +
           "\nOther Error Count = 0\nDrive Temperature =  31C (87.80 F)\n"
           "Predictive Failure Count = 0\nS.M.A.R.T alert flagged by drive = " +
           alert + "\n\n\n" + head +
           " Device attributes :\n===================================\nSN = " + serial +
           "\nManufacturer Id = EX\nModel Number = EX1000 NM 0023 X\nNAND Vendor = NA\n"
           "WWN = 5000000000000001\nFirmware Revision = EX07\n"
           "Raw size = 931.512 GB [0x74706db0 Sectors]\n"
           "Coerced size = 930.390 GB [0x744c8000 Sectors]\n"
           "Non Coerced size = 931.012 GB [0x74606db0 Sectors]\nLogical Sector Size = 512B\n\n\n" +
           head + " Policies/Settings :\n===================================\n" +
           std::string(serial == "EXD1" ? "Drive position = DriveGroup:0, Span:0, Row:0\n" : "") +
           "Needs EKM Attention = No\n\n"
           "Port Information :\n================\n\n"
           "-----------------------------------------\n"
           "Port Status Linkspeed SAS address\n"
           "-----------------------------------------\n"
           "   0 Active 6.0Gb/s   0x4433221103000000\n"
           "-----------------------------------------\n\n\n"
           "Inquiry Data =\n00 00 07 12 c5 00 10 03\n4e 45 54 41\n\n";
}

const std::string kHead =
    "CLI Version = 007.1211.0000.0000 Nov 07, 2019\nController = 1\nStatus = Success\n"
    "Description = Show Drive Information Succeeded.\n\n\n";

std::string details() {
    return kHead + details_of("/c1/e252/s1", "EXD1", "3", "No") +
           details_of("/c1/e252/s2", "EXD2", "0", "Yes") +
           details_of("/c1/e252/s3", "EXD3", "0", "No");
}

std::string with(std::string text, const std::string& old, const std::string& replacement) {
    const auto at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return text.replace(at, old.size(), replacement);
}

std::string without_line_of(std::string text, const std::string& part) {
    const auto at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    const auto begin = text.rfind('\n', at) + 1;
    return text.erase(begin, text.find('\n', at) + 1 - begin);
}

TEST(Storcli, reads_a_controller) {
    const auto read = read_text(read_storcli, kShow);
    EXPECT_EQ(describe(read.found), kShown);
    EXPECT_EQ(describe(read.how), "63 lines\n");
    EXPECT_TRUE(read.how.whole());
}

TEST(Storcli, stands_other_line_ends) {
    std::string crlf;
    for (const char c : kShow) crlf += c == '\n' ? "\r\n" : std::string(1, c);
    EXPECT_EQ(describe(read_text(read_storcli, crlf).found), kShown);
    auto read = read_text(read_storcli, kShow.substr(0, kShow.find_last_not_of('\n') + 1));
    EXPECT_EQ(describe(read.found), kShown);
    EXPECT_TRUE(read.how.whole());
}

TEST(Storcli, stands_other_texts_before_and_behind) {
    const auto read = read_text(
        read_storcli, "IANA PEN registry open failed: No such file\n" + kShow + "Killed by fate\n");
    EXPECT_EQ(read.found.drives.size(), 4U);
    EXPECT_EQ(read.found.drives[0].place.line, 56);
    EXPECT_EQ(describe(read.how), "65 lines, 2 not understood (1)\n");
}

TEST(Storcli, a_column_more_or_less_shifts_nothing) {
    // Without Cac, Type and TR, as old versions are; wider names are no matter.
    const std::regex old_vd("(DG/VD.*) Cac (.*)|(0/[01] .*) -   (OFF.*)");
    std::istringstream in(kShow);
    std::string text;
    for (std::string line; std::getline(in, line);)
        text += std::regex_replace(line, old_vd, "$1$3 $2$4") + "\n";
    ASSERT_EQ(text.find(" Cac "), std::string::npos);
    EXPECT_EQ(describe(read_text(read_storcli, text).found), kShown);
}

TEST(Storcli, reads_details_by_their_own_headings) {
    const auto read = read_text(read_storcli, details(), "c9_pdlist.txt");
    EXPECT_TRUE(read.how.whole()) << describe(read.how);
    EXPECT_EQ(describe(read.found),
              "drives 7: controller=1 enclosure=252 slot=1 drive_group=0 "
              "capacity_bytes=998998655631 sector_bytes=512 model=EX1000 NM 0023 X serial=EXD1 "
              "wwn=5000000000000001 firmware=EX07 temperature_celsius=31 media_errors=3 "
              "other_errors=0 predicted_failures=0 shield_counter=2 smart_alert=no\n"
              "drives 53: controller=1 enclosure=252 slot=2 "
              "capacity_bytes=998998655631 sector_bytes=512 model=EX1000 NM 0023 X serial=EXD2 "
              "wwn=5000000000000001 firmware=EX07 temperature_celsius=31 media_errors=0 "
              "other_errors=0 predicted_failures=0 shield_counter=2 smart_alert=yes\n"
              "drives 98: controller=1 enclosure=252 slot=3 "
              "capacity_bytes=998998655631 sector_bytes=512 model=EX1000 NM 0023 X serial=EXD3 "
              "wwn=5000000000000001 firmware=EX07 temperature_celsius=31 media_errors=0 "
              "other_errors=0 predicted_failures=0 shield_counter=2 smart_alert=no\n");
    const auto& elsewhere = read.found.drives[0].elsewhere;
    const auto errors = std::find_if(elsewhere.begin(), elsewhere.end(),
                                     [](const auto& at) { return at.field == "media_errors"; });
    ASSERT_NE(errors, elsewhere.end());
    EXPECT_EQ(errors->place, (Place{"c9_pdlist.txt", 13}));
    EXPECT_EQ(place_of(read.found.drives[0], "shield_counter"), (Place{"c9_pdlist.txt", 12}));
}

TEST(Storcli, says_what_is_missing) {
    struct Case {
        std::string text;
        const char* how;
        const char* why;
    };
    const Case cases[] = {
        {"", "0 lines\ngap 0: no answer of storcli is in it\n", "nothing"},
        {"storcli64: command not found\n",
         "1 lines, 1 not understood (1)\ngap 1: no answer of storcli is in it\n", "no answer"},
        {without_line_of(kShow, "252:2    10"),
         "62 lines\ngap 62: 4 physical drives announced, 3 read\n", "a row is missing"},
        {without_line_of(kShow, "0/1   RAID1"),
         "62 lines\ngap 62: 2 virtual drives announced, 1 read\n", "a volume is missing"},
        {with(kShow, "252:1     9 Onln ", "252:1     Onln "),
         "63 lines\ngap 55: a row that does not fit its heading\n"
         "gap 63: 4 physical drives announced, 3 read\n",
         "a shifted row"},
        {with(kShow, "Physical Drives = 4", "Physical Drives = x"),
         "63 lines\ngap 47: a count that cannot be read: Physical Drives\n", "a broken count"},
        {with(details(), "Media Error Count = 3", "Media Error Count = three"),
         "142 lines\ngap 13: a value that cannot be read: Media Error Count\n", "a broken number"},
        {without_line_of(details(), "Firmware Revision"),
         "141 lines\ngap 52: the details of a drive are not whole\n", "a missing detail"},
        {"Controller = 0\nStatus = Failure\nDescription = Controller 0 not found\n",
         "3 lines\nerror 2: Controller 0 not found\n", "no controller"},
        {"Controller = 0\nStatus = Failure\nDescription = None\n\nDetailed Status :\n"
         "===============\n\n-------------------------------------------------\n"
         "Ctrl Status Property ErrMsg                ErrCd \n"
         "-------------------------------------------------\n"
         "   0 Failed -        Cachevault is absent!    34 \n"
         "-------------------------------------------------\n",
         "12 lines\nerror 11: Cachevault is absent!\n", "what failed stands in a table"},
        {kShow.substr(0, kShow.find("\nEID=Enclosure Device ID|Slt")),
         "59 lines\ngap 59: the legend below a table is missing\n", "cut behind the drives"},
        {"Controller = 0\nStatus = Success\nDescription = No VD's have been configured.\n",
         "3 lines\n", "there are none"},
        {"Controller = 0\nStatus = Success\nDescription = None\n",
         "3 lines\ngap 3: the answer is empty\n", "cut behind the head"},
        {"Controller = 0\n", "1 lines\ngap 1: the answer has no status\n", "cut in the head"},
        {"Controller = 0\nStatus = Success\nDescription = None\n\nProduct Name = X\n"
         "Physical Drives = 0\n\nEnergy Pack Info :\n================\n\n"
         "-------------\nPack Health \n-------------\nA    Failed \n-------------\n\n"
         "New Things :\n==========\n\n----------\nOdd Thing \n----------\n1   2     \n----------\n\n"
         "Policies Table :\n==============\n\n----------------------\n"
         "Policy Current Default \n----------------------\nA      30 %    \n"
         "----------------------\n",
         "33 lines, 1 not understood (21)\ngap 12: a table with a heading that no reader knows\n",
         "tables that nobody knows: of a battery, and of something else"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(describe(read_text(read_storcli, c.text).how), c.how) << c.why;
}

TEST(Storcli, a_text_that_lost_rows_is_not_whole) {
    const auto full = read_text(read_storcli, kShow).found;
    for (std::size_t size = 0; size < kShow.size(); ++size) {
        const auto read = read_text(read_storcli, kShow.substr(0, size));
        const bool lost = read.found.drives.size() < full.drives.size() ||
                          read.found.volumes.size() < full.volumes.size() ||
                          read.found.topology.size() < full.topology.size() ||
                          read.found.volume_members.size() < full.volume_members.size();
        if (lost) {
            EXPECT_FALSE(read.how.whole()) << "cut at byte " << size;
        } else if (read.how.whole()) {
            EXPECT_EQ(describe(read.found), kShown) << "cut at byte " << size;
        }
    }
}

TEST(Storcli, details_that_lost_drives_are_not_whole) {
    const auto text = details();
    const Inventory shown = read_text(read_storcli, kShow).found;
    Inventory full = shown;
    {
        const auto more = read_text(read_storcli, text).found.drives;
        full.drives.insert(full.drives.end(), more.begin(), more.end());
        EXPECT_TRUE(join_storage(full).empty());
    }
    const auto wanted = describe(full);
    for (std::size_t size = 0; size < text.size(); ++size) {
        auto found = shown;
        const auto read = read_text(read_storcli, text.substr(0, size));
        found.drives.insert(found.drives.end(), read.found.drives.begin(), read.found.drives.end());
        const auto gaps = join_storage(found);
        if (describe(found) != wanted) {
            EXPECT_FALSE(read.how.whole() && gaps.empty()) << "cut at byte " << size;
        }
    }
}

TEST(Storcli, reads_other_answers) {
    struct Case {
        const char* text;
        const char* found;
    };
    const Case cases[] = {
        // progress
        {"Controller = 0\nStatus = Success\nDescription = Show Drive Rebuild Status Succeeded.\n\n\n"
         "----------------------------------------------------------\n"
         "Drive-ID    Progress% Status          Estimated Time Left \n"
         "----------------------------------------------------------\n"
         "/c0/e252/s6 -         Not in progress -                   \n"
         "/c0/e252/s7 9         In progress     49 Minutes          \n"
         "----------------------------------------------------------\n",
         "drives 10: controller=0 enclosure=252 slot=7 rebuild_percent=9\n"},
        // enclosures
        {"Controller = 0\nStatus = Success\nDescription = None\n\n\nEnclosure /c0/e14  :\n"
         "==================\n\nInformation :\n===========\nDevice ID = 14\nStatus = OK\n"
         "Enclosure Serial Number =    50000d1704770b3e\n\nProperties :\n==========\n\n"
         "------------------------------------------------------------------\n"
         "EID State Slots PD PS Fans TSs Alms SIM ProdID     VendorSpecific\n"
         "------------------------------------------------------------------\n"
         " 14 OK       24  4  2    4   2    1   1 AEC 82885T PMCSIERA D\n"
         "------------------------------------------------------------------\n",
         "enclosures 21: controller=0 number=14 slots=24 state=OK model=AEC 82885T "
         "serial=50000d1704770b3e\n"},
        // volumes with their drives
        {"Controller = 0\nStatus = Success\nDescription = None\n\n\n/c0/v0 :\n======\n\n"
         "---------------------------------------------------------------\n"
         "DG/VD TYPE  State Access Consist Cache Cac sCC       Size Name\n"
         "---------------------------------------------------------------\n"
         "0/0   RAID1 Optl  RW     No      NRWTD -   OFF 557.861 GB\n"
         "---------------------------------------------------------------\n\n\n"
         "VD0 Properties :\n==============\nStrip Size = 64 KB\n"
         "Active Operations = Rebuild (34%)\nOS Drive Name = /dev/sda\n",
         "volumes 12: controller=0 drive_group=0 number=0 raid=RAID1 state=Optl access=RW "
         "consistent=no cache=NRWTD capacity_bytes=598998687678 device=/dev/sda operation=Rebuild "
         "progress_percent=34\n"},
        // a battery
        {"Controller = 0\nStatus = Success\nDescription = None\n\n\nCachevault_Info :\n"
         "===============\n\n--------------------\nProperty    Value   \n--------------------\n"
         "Type        CVPM02  \nTemperature 28 C    \nState       Optimal \n"
         "--------------------\n\n\nFirmware_Status :\n===============\n\n"
         "--------------------------------------------------\n"
         "Property                                   Value \n"
         "--------------------------------------------------\n"
         "NVCache State                              OK    \n"
         "Replacement required                       Yes   \n"
         "Pack is about to fail & should be replaced Yes   \n"
         "Remaining Capacity Low                     No    \n"
         "--------------------------------------------------\n",
         "batteries 14: controller=0 model=CVPM02 state=Optimal, Replacement required, Pack is about to fail & should be replaced "
         ""
         "temperature_celsius=28\n"},
        // what the controller's state does not tell
        {"Controller = 0\nStatus = Success\nDescription = None\n\nBasics :\n======\nController = 0\n"
         "Model = X\n\nStatus :\n======\nController Status = Optimal\n"
         "Memory Correctable Errors = 3\nMemory Uncorrectable Errors = 2\nBBU Status = 32\n"
         "Any Offline VD Cache Preserved = Yes\nController shutdown required = No\n"
         "Physical Drives = 0\n",
         "controllers 12: number=0 model=X status=Optimal, Memory Uncorrectable Errors = 2, "
         "Any Offline VD Cache Preserved = Yes drives=0\n"},
        // all controllers
        {"Status Code = 0\nStatus = Success\nDescription = None\n\nNumber of Controllers = 2\n\n"
         "System Overview :\n===============\n\n"
         "------------------------------------------------------------------------------------\n"
         "Ctl Model               Ports PDs DGs DNOpt VDs VNOpt BBU sPR DS  EHS ASOs Hlth  \n"
         "------------------------------------------------------------------------------------\n"
         "  0 AVAGOMegaRAIDSAS9361-8i     8  12   2     1   3     1 Opt On  1&2 Y       4 NdAtn \n"
         "  1 Example 9341        8   6   2     0   2     0 N/A On  3   Y       3 Opt   \n"
         "------------------------------------------------------------------------------------\n",
         "controllers 13: number=0 model=AVAGOMegaRAIDSAS9361-8i status=NdAtn volumes=3 drives=12\n"
         "controllers 14: number=1 model=Example 9341 status=Opt volumes=2 drives=6\n"
         "controller_count 5: tool=storcli count=2\n"},
        {"Status Code = 0\nStatus = Success\nDescription = None\n\nController Count = 12\n\n",
         "controller_count 5: tool=storcli count=12\n"},
        // JBOD mode
        {"Controller = 0\nStatus = Success\nDescription = None\n\nProduct Name = X\n"
         "JBOD Drives = 1\n\nJBOD LIST :\n=========\n\n"
         "-------------------------------------------------------------------------\n"
         "ID EID:Slt DID State Intf Med     Size SeSz Model        Vendor  Port\n"
         "-------------------------------------------------------------------------\n"
         " 0 252:0     4 Onln  SAS  HDD 7.276 TB 512B EX8000 NM    SEA GT  0 - 3 x1\n"
         "-------------------------------------------------------------------------\n",
         "controllers 5: number=0 model=X\n"
         "drives 14: controller=0 enclosure=252 slot=0 device_id=4 state=Onln "
         "capacity_bytes=8000046603698 interface=SAS media=HDD sector_bytes=512 model=EX8000 NM\n"},
        // storcli2
        {"Controller = 0\nStatus = Success\nDescription = None\n\nProduct Name = X\n"
         "Physical Drives = 3\n\nPD LIST :\n=======\n\n"
         "------------------------------------------------------------------------------------------"
         "-----\n"
         "EID:Slt PID State Status DG     Size Intf Med SED_Type SeSz Model        Sp LU/NS Count "
         "Alt-EID\n"
         "------------------------------------------------------------------------------------------"
         "-----\n"
         "306:1   320 Conf  Online  0 3.637 TB SAS  HDD -        512B EX4000 NM    U            1 "
         "-\n"
         "306:2   321 Conf  Failed  0 3.637 TB SAS  HDD -        512B EX4000NM     U            1 "
         "-\n"
         "306:3   322 UConf Good    - 3.637 TB NVMe SSD -        4 KB EX4000NM     U            1 "
         "-\n"
         "------------------------------------------------------------------------------------------"
         "-----\n\nLU/NS Count-Logical Unit/Namespace Count|Alt-EID-Alternate Enclosure Device ID\n",
         "controllers 5: number=0 model=X drives=3\n"
         "drives 14: controller=0 enclosure=306 slot=1 device_id=320 state=Online drive_group=0 "
         "is_foreign=no capacity_bytes=3998923790221 interface=SAS media=HDD sector_bytes=512 "
         "model=EX4000 NM\n"
         "drives 15: controller=0 enclosure=306 slot=2 device_id=321 state=Failed drive_group=0 "
         "is_foreign=no capacity_bytes=3998923790221 interface=SAS media=HDD sector_bytes=512 "
         "model=EX4000NM\n"
         "drives 16: controller=0 enclosure=306 slot=3 device_id=322 state=UConf is_foreign=no "
         "capacity_bytes=3998923790221 interface=NVMe media=SSD sector_bytes=4096 model=EX4000NM\n"
         "volume_members 14: controller=0 drive_group=0 is_spare=no state=Online enclosure=306 "
         "slot=1 device_id=320\n"
         "volume_members 15: controller=0 drive_group=0 is_spare=no state=Failed enclosure=306 "
         "slot=2 device_id=321\n"},
        {"Controller = 0\nStatus = Success\nDescription = None\n\nProduct Name = X\n"
         "Drive Groups = 1\n\nTOPOLOGY :\n========\n\n"
         "-------------------------------------------------------------\n"
         "DG Span Row EID:Slot PID Type  State Status  BT       Size\n"
         "-------------------------------------------------------------\n"
         " 0 -    -   -        -   RAID1 Dgrd  -       N    3.637 TB\n"
         " 0 0    -   -        -   RAID1 Dgrd  -       N    3.637 TB\n"
         " 0 0    0   306:1    320 DRIVE Conf  Online  N    3.637 TB\n"
         " 0 0    1   306:2    321 DRIVE Conf  Failed  N    3.637 TB\n"
         "-------------------------------------------------------------\n\n"
         "Virtual Drives = 0\n\nPhysical Drives = 0\n\nEnergy Pack Info :\n================\n\n"
         "----------------------------------------------------\n"
         "Type     SubType Voltage(mV) Temperature(C) Status\n"
         "----------------------------------------------------\n"
         "Supercap FBU345         9384             24 Degraded\n"
         "----------------------------------------------------\n",
         "controllers 5: number=0 model=X volumes=0 drives=0\n"
         "batteries 30: controller=0 model=FBU345 state=Degraded temperature_celsius=24\n"
         "volume_members 16: controller=0 drive_group=0 span=0 position=0 is_spare=no "
         "state=Online enclosure=306 slot=1 device_id=320\n"
         "volume_members 17: controller=0 drive_group=0 span=0 position=1 is_spare=no "
         "state=Failed enclosure=306 slot=2 device_id=321\n"
         "topology 14: controller=0 drive_group=0 type=RAID1 state=Dgrd\n"
         "topology 15: controller=0 drive_group=0 array=0 type=RAID1 state=Dgrd\n"},
    };
    for (const auto& c : cases) {
        auto read = read_text(read_storcli, c.text);
        EXPECT_TRUE(read.how.whole()) << c.text << describe(read.how);
        join_storage(read.found);
        EXPECT_EQ(describe(read.found), c.found);
    }
}

// What rows say, by an expression of their whole form and without headings.
struct Naive {
    std::string drives, volumes;
};

Naive naive(const std::string& text) {
    static const std::regex drive(
        R"(\s*(\d*):(\d+)\s+(\d+)\s+(\w+)\s+(\d+|-|F)\s+([\d.]+ [KMGTP]B)\s+(\S+)\s+(\S+)\s+(\S+)\s+(\S+)\s+(\d+ ?K?B)\s+(?:(\S.*?)\s+)?([UDTF-])(?:\s+-)?\s*)");
    static const std::regex volume(
        R"((\d+)/(\d+)\s+(\w+)\s+(\w+)\s+(\w+)\s+(\w+)\s+(\w+)\s+(?:\S+\s+)?(\S+)\s+([\d.]+ [KMGTP]B)\s*(.*?)\s*)");
    Naive found;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.ends_with('\r')) line.pop_back();
        std::smatch m;
        if (std::regex_match(line, m, drive)) {
            found.drives += m[1].str() + ":" + m[2].str() + " " + m[3].str() + " " + m[4].str() +
                            " " + m[5].str() + " " + m[12].str() + "\n";
        } else if (std::regex_match(line, m, volume)) {
            found.volumes += m[1].str() + "/" + m[2].str() + " " + m[3].str() + " " + m[4].str() +
                             " " + m[10].str() + "\n";
        }
    }
    return found;
}

std::string number(const Integer& value, const char* none) {
    return value ? std::to_string(*value) : none;
}

Naive as_naive(const Inventory& inventory) {
    Naive found;
    for (const auto& d : inventory.drives) {
        if (!d.state) continue;
        found.drives += number(d.enclosure, "") + ":" + number(d.slot, "") + " " +
                        number(d.device_id, "") + " " + *d.state + " " +
                        (d.is_foreign.value_or(false) ? "F" : number(d.drive_group, "-")) + " " +
                        d.model.value_or("") + "\n";
    }
    for (const auto& v : inventory.volumes) {
        if (!v.state) continue;
        found.volumes += number(v.drive_group, "-") + "/" + number(v.number, "") + " " +
                         v.raid.value_or("") + " " + *v.state + " " + v.name.value_or("") + "\n";
    }
    return found;
}

TEST(Storcli, agrees_with_a_naive_reading_of_captures) {
    const auto captures = captures_of("storcli");
    if (captures.empty()) GTEST_SKIP() << "no captures beside the repository";
    std::size_t rows = 0;
    for (const auto& [name, text] : captures) {
        const auto read = read_text(read_storcli, text);
        const auto found = as_naive(read.found);
        const auto wanted = naive(text);
        EXPECT_EQ(found.drives, wanted.drives) << name;
        EXPECT_EQ(found.volumes, wanted.volumes) << name;
        rows += read.found.drives.size() + read.found.volumes.size();
    }
    EXPECT_GT(rows, 200U);
}

}  // namespace
}  // namespace qvhost::inventory
