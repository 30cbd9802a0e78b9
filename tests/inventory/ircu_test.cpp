#include "inventory/storage/ircu.h"

#include <gtest/gtest.h>

#include <sstream>

#include "captures_beside.h"
#include "describe.h"

namespace qvhost::inventory {
namespace {

const std::string kDisplay = R"(LSI Corporation SAS2 IR Configuration Utility.
Version 20.00.00.00 (2014.09.18)
Copyright (c) 2008-2014 LSI Corporation. All rights reserved.

Read configuration has been initiated for controller 0
------------------------------------------------------------------------
Controller information
------------------------------------------------------------------------
  Controller type                         : SAS2308_2
  Firmware version                        : 19.00.00.00
  RAID Support                            : Yes
------------------------------------------------------------------------
IR Volume information
------------------------------------------------------------------------
IR volume 1
  Volume ID                               : 286
  Status of volume                        : Degraded (DGD)
  Volume wwid                             : 0677c0fb06777e7b
  RAID level                              : RAID1
  Size (in MB)                            : 139236
  Physical hard disks                     :
  PHY[0] Enclosure#/Slot#                 : 1:0
  PHY[1] Enclosure#/Slot#                 : 0:0
------------------------------------------------------------------------
Physical device information
------------------------------------------------------------------------
Initiator at ID #0

Device is a Hard disk
  Enclosure #                             : 1
  Slot #                                  : 0
  SAS Address                             : 4433221-1-0700-0000
  State                                   : Optimal (OPT)
  Size (in MB)/(in sectors)               : 476940/976773167
  Manufacturer                            : ATA
  Model Number                            : EX500 620NS
  Firmware Revision                       : AA0D
  Serial No                               : 9XF00001
  GUID                                    : 5000c5007bc1cfd7
  Protocol                                : SATA
  Drive Type                              : SATA_HDD

Device is a Hard disk
  Enclosure #                             : 1
  Slot #                                  : 2
  State                                   : Hot Spare (HSP)
  Serial No                               :

Device is a Enclosure services device
  Enclosure #                             : 1
  Slot #                                  : 9
  State                                   : Standby (SBY)
------------------------------------------------------------------------
Enclosure information
------------------------------------------------------------------------
  Enclosure#                              : 1
  Logical ID                              : 5782bcb0:19e35100
  Numslots                                : 9
  StartSlot                               : 0
------------------------------------------------------------------------
SAS2IRCU: Command DISPLAY Completed Successfully.
SAS2IRCU: Utility Completed Successfully.
)";

TEST(Ircu, reads_a_controller) {
    const auto read = read_text(read_ircu, kDisplay);
    EXPECT_EQ(
        describe(read.found),
        "controllers 7: number=0 model=SAS2308_2 firmware=19.00.00.00\n"
        "enclosures 56: controller=0 number=1 slots=9\n"
        "volumes 17: controller=0 number=286 raid=RAID1 state=Degraded (DGD) "
        "capacity_bytes=145999527936\n"
        "drives 33: controller=0 enclosure=1 slot=0 state=Optimal (OPT) "
        "capacity_bytes=500107837440 interface=SATA media=HDD model=EX500 620NS "
        "serial=9XF00001 wwn=5000c5007bc1cfd7 firmware=AA0D\n"
        "drives 46: controller=0 enclosure=1 slot=2 state=Hot Spare (HSP) spare=global\n"
        "volume_members 22: controller=0 volume=286 position=0 is_spare=no enclosure=1 slot=0\n"
        "volume_members 23: controller=0 volume=286 position=1 is_spare=no enclosure=0 slot=0\n");
    EXPECT_EQ(describe(read.how), "62 lines\n");
    const auto end = kDisplay.find("SAS2IRCU: Utility Completed Successfully");
    for (std::size_t size = 0; size < end; ++size)
        EXPECT_FALSE(read_text(read_ircu, kDisplay.substr(0, size)).how.whole()) << size;
}

TEST(Ircu, reads_other_answers) {
    struct Case {
        const char* text;
        const char* found;
        const char* how;
    };
    const Case cases[] = {
        {"         Adapter      Vendor  Device                       SubSys  SubSys\n"
         " Index    Type          ID      ID    Pci Address          Ven ID  Dev ID\n"
         " -----  ------------  ------  ------  -----------------    ------  ------\n"
         "   1     SAS3008      1000h    72h   00h:05h:00h:00h      1028h   1f1eh\n"
         "SAS3IRCU: Utility Completed Successfully.\n",
         "controllers 4: number=1 model=SAS3008\ncontroller_count 5: tool=sas2ircu count=1\n",
         "5 lines\n"},
        {"Background command progress status for controller 0...\nIR Volume 1\n"
         "  Volume ID                               : 286\n"
         "  Current operation                       : Synchronize\n"
         "  Volume status                           : Enabled\n"
         "  Volume state                            : Degraded\n"
         "  Percentage complete                     : 12.5%\n"
         "SAS2IRCU: Utility Completed Successfully.\n",
         "volumes 6: controller=0 number=286 state=Degraded operation=Synchronize "
         "progress_percent=12.5\n",
         "8 lines\n"},
        {"SAS2IRCU: there are no IR volumes on the controller!\n"
         "SAS2IRCU: Error executing command STATUS.\n",
         "", "2 lines\nerror 2: SAS2IRCU: there are no IR volumes on the controller!\n"},
    };
    for (const auto& c : cases) {
        const auto read = read_text(read_ircu, c.text);
        EXPECT_EQ(describe(read.found), c.found);
        EXPECT_EQ(describe(read.how), c.how);
    }
}

TEST(Ircu, agrees_with_a_naive_reading_of_captures) {
    const auto captures = captures_of("sas2ircu");
    if (captures.empty()) GTEST_SKIP() << "no captures beside the repository";
    for (const auto& [name, text] : captures) {
        const auto read = read_text(read_ircu, text);
        std::string found, wanted;
        for (const auto& drive : read.found.drives)
            found += drive.serial.value_or("") + " " + drive.model.value_or("") + "\n";
        std::istringstream in(text);
        std::string model, serial;
        bool is_disk = false;
        for (std::string line; std::getline(in, line);) {
            const auto value = line.substr(std::min(line.find(" : "), line.size() - 1) + 1);
            const auto word = value.substr(std::min(value.find_first_not_of(": \r"), value.size()));
            const auto cell = word.substr(0, word.find_last_not_of(" \r") + 1);
            if (line.find("Device is a") != std::string::npos)
                is_disk = line.find("Hard disk") != std::string::npos;
            if (line.find("  Model Number  ") == 0) model = cell;
            if (line.find("  Serial No  ") == 0 && is_disk) wanted += cell + " " + model + "\n";
        }
        EXPECT_EQ(found, wanted) << name;
    }
}

}  // namespace
}  // namespace qvhost::inventory
