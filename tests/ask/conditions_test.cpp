// What calls for which question, on machines made of a few files and captures.
#include "ask/conditions.h"

#include <set>

#include "server.h"

namespace test {

namespace {

using namespace qvhost::ask;

class Conditions : public AskedServer {
protected:
    Facts facts() {
        Facts facts(log_dir, foreign);
        for (const auto& entry : std::filesystem::directory_iterator(log_dir))
            facts.read(entry.path().filename());
        return facts;
    }
    std::set<std::string> foreign;
    // "no", "maybe" or "yes", and what there is to ask about.
    std::string call(When when, bool is_replay = false) {
        const auto made = called_for(when, facts(), is_replay ? std::filesystem::path() : root);
        std::string text = made.called == Called::no      ? "no"
                           : made.called == Called::maybe ? "maybe"
                                                          : "yes";
        for (const auto& n : made.each) text += n.empty() ? " -" : " " + n;
        return text + (made.problem.empty() ? "" : ": " + made.problem);
    }
};

TEST_F(Conditions, FilesOfTheSystemCall) {
    for (const auto& [when, file] : {
             std::pair{When::bmc, "dev/ipmi0"},
             {When::bmc, "dev/ipmidev/0"},
             {When::md, "proc/mdstat"},
             {When::zfs, "dev/zfs"},
             {When::multipath, "etc/multipath.conf"},
         }) {
        SCOPED_TRACE(file);
        EXPECT_EQ(call(when), "no");
        has_file(file);
        EXPECT_EQ(call(when), "yes -");
        std::filesystem::remove(root / file);
    }
}

TEST_F(Conditions, ABmcWithoutItsDeviceIsToldOf) {
    has_capture("dmidecode.log",
                "# dmidecode 3.3\nHandle 0x0026, DMI type 38, 18 bytes\nIPMI Device Information\n"
                "\tInterface Type: KCS (Keyboard Control Style)\n\n");
    EXPECT_EQ(call(When::bmc), "yes: there is a BMC, and no /dev/ipmi0 to reach it by");
    has_file("dev/ipmi0");
    EXPECT_EQ(call(When::bmc), "yes -");
}

TEST_F(Conditions, ControllersAreThoseOfThePciBus) {
    const auto with_pci = [&](const std::string& text, When when) {
        has_capture("host_lspci.txt", text);
        return call(when);
    };
    EXPECT_EQ(call(When::megaraid), "maybe -") << "lspci was not asked";
    EXPECT_EQ(with_pci("00:00.0 Host bridge: Example\n", When::megaraid), "no -");
    EXPECT_EQ(with_pci("03:00.0 RAID bus controller: LSI MegaRAID SAS-3 3108\n", When::megaraid),
              "yes -");
    EXPECT_EQ(call(When::adaptec), "no -");
    EXPECT_EQ(with_pci("03:00.0 RAID bus controller: Adaptec Series 7\n", When::adaptec), "yes -");
    EXPECT_EQ(
        with_pci("03:00.0 Serial Attached SCSI controller: SAS2308 PCI-Express\n", When::sas2),
        "yes -");
    EXPECT_EQ(
        with_pci("03:00.0 Serial Attached SCSI controller: SAS3408 PCI-Express\n", When::megaraid),
        "yes -");
    EXPECT_EQ(
        with_pci("03:00.0 Serial Attached SCSI controller: SAS3008 PCI-Express\n", When::sas3),
        "maybe -")
        << "storcli may tell of it";
    EXPECT_EQ(call(When::megaraid), "maybe -");
    EXPECT_EQ(call(When::sas2), "no -");
    EXPECT_EQ(
        with_pci("03:00.0 RAID bus controller: Example Smart Array Gen9\n", When::smart_array),
        "yes -");
    EXPECT_EQ(
        with_pci("03:00.0 RAID bus controller: Adaptec Smart Storage PQI 12G\n", When::smart_array),
        "maybe -");
    EXPECT_EQ(call(When::adaptec), "maybe -");
    EXPECT_EQ(with_pci("03:00.0 Ethernet controller: MegaRAID\n", When::megaraid), "no -");
}

TEST_F(Conditions, ControllersAreThoseThatAreListed) {
    EXPECT_EQ(call(When::controller), "yes");
    has_capture(
        "ctrlcount.txt",
        "Status Code = 0\nStatus = Success\nDescription = None\n\nController Count = 3\n\n");
    EXPECT_EQ(call(When::controller), "yes 0 1 2");
    has_capture("host_storcli_show.txt", controller_list(12));
    EXPECT_EQ(call(When::controller), "yes 0 1 2 3 4 5 6 7 8 9 10 11");
    EXPECT_EQ(call(When::first_controller), "yes 0");
    EXPECT_EQ(call(When::further_controller), "yes 1 2 3 4 5 6 7 8 9 10 11");
}

TEST_F(Conditions, AnAbsurdCountAsksNoMillionControllers) {
    has_capture("ctrlcount.txt", "Controller Count = 2000000000\n\n");
    EXPECT_EQ(called_for(When::controller, facts(), root).each.size(), 256u);
}

TEST_F(Conditions, SummariesCallForDetails) {
    has_capture("ctrlcount.txt", "Status = Success\n\nController Count = 3\n\n");
    has_capture("c0_showall.txt",
                "Controller = 0\nStatus = Success\n\nPhysical Drives = 2\n\nPD LIST :\n=======\n\n"
                "--------------------------------------------------------------\n"
                "EID:Slt DID State DG     Size Intf Med SED PI SeSz Model Sp \n"
                "--------------------------------------------------------------\n"
                "8:0       9 Onln   0 1.818 TB SAS  HDD N   N  512B EX1   U  \n"
                "8:1      10 Rbld   0 1.818 TB SAS  HDD N   N  512B EX1   U  \n"
                "--------------------------------------------------------------\n\n"
                "Cachevault_Info :\n===============\n");
    has_capture(
        "c1_showall.txt",
        "Controller = 1\nStatus = Success\n\nPhysical Drives = 1\n\nPD LIST :\n=======\n\n"
        "--------------------------------------------------------------\n"
        "EID:Slt DID State DG     Size Intf Med SED PI SeSz Model Sp \n"
        "--------------------------------------------------------------\n"
        " :5       9 Cpybck - 1.818 TB SAS  HDD N   N  512B EX1   U  \n"
        "--------------------------------------------------------------\n\nBBU_Info :\n========\n");
    EXPECT_EQ(call(When::rebuilding), "yes 0");
    EXPECT_EQ(call(When::copying), "yes 1");
    EXPECT_EQ(call(When::capacitor), "yes 0");
    EXPECT_EQ(call(When::battery), "yes 1");
    EXPECT_EQ(call(When::bare_slots), "yes 1");
}

TEST_F(Conditions, OtherMakersListTheirControllers) {
    EXPECT_EQ(call(When::adaptec_controller), "yes");
    EXPECT_EQ(call(When::sas2_adapter), "yes");
    has_capture("host_sas2ircu_list.txt",
                "         Adapter      Vendor  Device                       SubSys  SubSys\n"
                " Index    Type          ID      ID    Pci Address          Ven ID  Dev ID\n"
                " -----  ------------  ------  ------  -----------------    ------  ------\n"
                "   3     SAS2308_2     1000h    87h   00h:05h:00h:00h      1028h   1f1eh\n");
    EXPECT_EQ(call(When::sas2_adapter), "yes 3");
}

TEST_F(Conditions, ArraysAreThoseOfMdstat) {
    EXPECT_EQ(call(When::md_array), "yes");
    has_capture("host_mdstat.txt",
                "Personalities : [raid1] \nmd127 : active raid1 sda1[0] sdb1[1]\n"
                "      1046528 blocks super 1.2 [2/2] [UU]\n      \n"
                "md$(reboot) : active raid1 sdc1[0] sdd1[1]\n"
                "      1046528 blocks super 1.2 [2/2] [UU]\n      \nunused devices: <none>\n");
    EXPECT_EQ(call(When::md_array), "yes md127") << "no other name reaches a command line";
}

TEST_F(Conditions, DrivesBehindRaidAndOnUsbAreNotPlain) {
    EXPECT_EQ(call(When::plain_drives), "no");
    has_capture("host_lspci.txt",
                "02:00.0 RAID bus controller: LSI MegaRAID\n00:17.0 SATA controller: X\n");
    has_disk("sda", "pci0000:00/0000:00:02.0/0000:02:00.0/host0/target0:2:0");
    has_disk("sdb", "pci0000:00/0000:00:14.0/usb1/1-1/host1");
    has_disk("dm-0", "virtual");
    has_disk("loop0", "virtual");
    EXPECT_EQ(call(When::plain_drives), "no");
    has_disk("sdc", "pci0000:00/0000:00:17.0/ata1/host2");
    has_disk("nvme0n1", "pci0000:00/0000:00:1d.0/0000:65:00.0/nvme/nvme0");
    EXPECT_EQ(call(When::plain_drives), "yes -");

    has_capture(
        "host_smartctl_scan.json",
        R"({"devices": [{"name": "/dev/sda", "type": "scsi"}, {"name": "/dev/sdc", "type": "sat"},
                    {"name": "/dev/bus/0", "type": "megaraid,8"}, {"name": "/dev/nvme0", "type": "nvme"},
                    {"name": "/dev/nvme1", "type": "nvme"}, {"name": "/dev/sdc", "type": "scsi"}]})");
    EXPECT_EQ(call(When::plain_drive), "yes sdc nvme0");
    EXPECT_EQ(call(When::plain_drive, true), "yes sda sdc nvme0 nvme1")
        << "a replay looks at no /sys";
}

TEST_F(Conditions, DrivesAreTheSystemsWhereRaidIsButAName) {
    has_capture(
        "host_lspci.txt",
        "00:1f.2 RAID bus controller: Intel Corporation SATA Controller [RAID mode] (rev 06)\n"
        "64:00.5 RAID bus controller: Intel Corporation Volume Management Device NVMe RAID "
        "Controller (rev 07)\n");
    EXPECT_EQ(call(When::plain_drives), "no");
    has_disk("sda", "pci0000:00/0000:00:1f.2/ata1/host0");
    EXPECT_EQ(call(When::plain_drives), "yes -");
    has_disk("nvme0n1",
             "pci0000:64/0000:64:00.5/pci10000:00/10000:00:02.0/10000:01:00.0/nvme/nvme0");
    has_capture(
        "host_smartctl_scan.json",
        R"({"devices": [{"name": "/dev/sda", "type": "sat"}, {"name": "/dev/nvme0", "type": "nvme"}]})");
    EXPECT_EQ(call(When::plain_drive), "yes sda nvme0");
}

TEST_F(Conditions, NamesThatAreNoNamesReachNoCommandLine) {
    for (
        const char* scan : {
            R"({"devices": [{"name": "/dev/sda; reboot"}, {"name": "/dev/../etc"}, {"name": "/dev/"},
                             {"name": "sda"}, {"name": "/dev/sd"}, {"name": "/dev/nvme"}, {"name": "/dev/sd$x"},
                             {"name": "/dev/nvme0 -t x"}, {"name": 7}, {}, 7]})",
            R"({"devices": {"name": "/dev/sda"}})", R"([{"name": "/dev/sda"}])", "{", "", "null"}) {
        has_capture("host_smartctl_scan.json", scan);
        EXPECT_EQ(call(When::plain_drive, true), "yes") << scan;
    }
}

TEST_F(Conditions, AReplayTakesWhatItHasForNeeded) {
    for (const auto when : {When::bmc, When::md, When::zfs, When::multipath, When::megaraid,
                            When::adaptec, When::plain_drives, When::always})
        EXPECT_EQ(call(when, true), "yes -");
    EXPECT_EQ(call(When::adaptec_controller, true), "yes 1");
    EXPECT_EQ(call(When::sas2_adapter, true), "yes 0");
    EXPECT_EQ(call(When::sas3_adapter, true), "yes 0");
}

TEST_F(Conditions, ForeignFilesTellNothing) {
    has_capture("ctrlcount.txt", "Controller Count = 3\n\n");
    EXPECT_EQ(call(When::controller), "yes 0 1 2");
    foreign = {"ctrlcount.txt"};
    EXPECT_EQ(call(When::controller), "yes");
    auto known = facts();
    known.note_written("ctrlcount.txt");
    EXPECT_TRUE(known.has("ctrlcount.txt"));
}

}  // namespace

}  // namespace test
