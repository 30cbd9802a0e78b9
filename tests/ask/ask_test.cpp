// Which commands are run, in which order, and what is told of those that are not.
#include "ask/ask.h"

#include <chrono>
#include <csignal>

#include "server.h"

namespace test {

namespace {

using qvhost::ask::Lack;
using qvhost::ask::Recorded;

const std::string kPci =
    "02:00.0 RAID bus controller: LSI MegaRAID SAS-3 3108\n00:17.0 SATA controller: X\n";
const std::string kScan =
    R"({"devices": [{"name": "/dev/sdc", "type": "sat"}, {"name": "/dev/nvme0", "type": "nvme"}]})";
const std::string kMdstat =
    "Personalities : [raid1] \nmd0 : active raid1 sda1[0] sdb1[1]\n"
    "      1046528 blocks super 1.2 [2/2] [UU]\n      \nunused devices: <none>\n";
const std::string kSummary = "Controller = 1\nStatus = Success\nCachevault_Info :\n";

class Ask : public AskedServer {
protected:
    // Two MegaRAID controllers, a BMC, an array of the system, two drives behind no controller, all tools.
    void is_full() {
        for (const char* tool :
             {"lspci", "dmidecode", "dmesg", "cat", "hostname", "uname", "ipmitool", "lsblk",
              "mdadm", "smartctl", "zpool", "multipath", "arcconf", "sas2ircu", "ssacli"})
            has_tool(tool);
        has_vendor_tool("storcli_x64");
        has_file("dev/ipmi0");
        has_file("proc/mdstat");
        has_disk("sdc", "pci0000:00/0000:00:17.0/ata1");
        has_disk("nvme0n1", "pci0000:00/0000:65:00.0/nvme/nvme0");
        answers = {{"lspci", kPci},
                   {"storcli show", controller_list(2)},
                   {"storcli /c0 show all", "Controller = 0\nStatus = Success\n"},
                   {"storcli /c1 show all", kSummary},
                   {"cat /proc/mdstat", kMdstat},
                   {"smartctl --scan -j", kScan}};
    }
};

TEST_F(Ask, EverythingThatIsThere) {
    is_full();
    const Texts expected{
        "lspci > host_lspci.txt",
        "dmidecode > host_dmidecode.txt",
        "dmesg > host_dmesg.txt",
        "cat /proc/cpuinfo > host_cpuinfo.txt",
        "cat /proc/cmdline > host_cmdline.txt",
        "cat /etc/os-release > host_os_release.txt",
        "cat /etc/machine-id > host_machine_id.txt",
        "cat /proc/uptime > host_uptime.txt",
        "hostname > host_hostname.txt",
        "uname -r > host_uname.txt",
        "ipmitool sensor > host_ipmitool_sensor.txt",
        "ipmitool sdr elist > host_ipmitool_sdr.txt",
        "ipmitool mc selftest > host_selftest.txt",
        "ipmitool sel info > host_sel_info.txt",
        "ipmitool sel elist > host_sel.txt",
        "ipmitool chassis status > host_chassis_status.txt",
        "ipmitool mc info > host_mc_info.txt",
        "ipmitool fru > host_ipmitool_fru.txt",
        "storcli show > host_storcli_show.txt",
        "storcli /c0 show all > host_storcli_c0_show.txt",
        "storcli /c1 show all > host_storcli_c1_show.txt",
        "storcli /c0/eall/sall show all > host_storcli_c0_drives.txt",
        "storcli /c1/eall/sall show all > host_storcli_c1_drives.txt",
        "storcli /c0/vall show all > host_storcli_c0_volumes.txt",
        "storcli /c1/vall show all > host_storcli_c1_volumes.txt",
        "storcli /c0/eall show all > host_storcli_c0_enclosures.txt",
        "storcli /c1/eall show all > host_storcli_c1_enclosures.txt",
        "storcli /c1/cv show all > host_storcli_c1_cv.txt",
        "storcli /c0 show events > host_storcli_c0_events.txt",
        "storcli /c1 show events > host_storcli_c1_events.txt",
        "cat /proc/mdstat > host_mdstat.txt",
        "mdadm --detail /dev/md0 > host_mdadm_md0.txt",
        "smartctl --scan -j > host_smartctl_scan.json",
        "smartctl -x -j /dev/sdc > host_smartctl_sdc.json",
        "smartctl -x -j /dev/nvme0 > host_smartctl_nvme0.json",
        "lsblk -J -b -o NAME,TYPE,SIZE,MODEL,SERIAL,WWN,ROTA,TRAN,LOG-SEC > host_lsblk.json",
    };
    EXPECT_EQ(asked(), expected);
    EXPECT_EQ(lacks, std::vector<Lack>{});
    EXPECT_EQ(begun.size(), expected.size());
    EXPECT_EQ(begun.front(), "lspci");
}

TEST_F(Ask, VerdictsNeedLess) {
    is_full();
    auto quick = settings();
    quick.for_verdicts_alone = true;
    EXPECT_EQ(asked(quick), (Texts{
                                "lspci > host_lspci.txt",
                                "dmidecode > host_dmidecode.txt",
                                "dmesg > host_dmesg.txt",
                                "ipmitool sensor > host_ipmitool_sensor.txt",
                                "ipmitool sdr elist > host_ipmitool_sdr.txt",
                                "ipmitool mc selftest > host_selftest.txt",
                                "ipmitool sel info > host_sel_info.txt",
                                "ipmitool sel elist > host_sel.txt",
                                "ipmitool chassis status > host_chassis_status.txt",
                                "storcli show > host_storcli_show.txt",
                                "storcli /c0 show all > host_storcli_c0_show.txt",
                                "storcli /c1 show all > host_storcli_c1_show.txt",
                                "storcli /c0/eall/sall show all > host_storcli_c0_drives.txt",
                                "storcli /c1/eall/sall show all > host_storcli_c1_drives.txt",
                                "storcli /c1/cv show all > host_storcli_c1_cv.txt",
                                "cat /proc/mdstat > host_mdstat.txt",
                                "mdadm --detail /dev/md0 > host_mdadm_md0.txt",
                                "smartctl --scan -j > host_smartctl_scan.json",
                                "smartctl -x -j /dev/sdc > host_smartctl_sdc.json",
                                "smartctl -x -j /dev/nvme0 > host_smartctl_nvme0.json",
                            }));
}

TEST_F(Ask, WhatAPlugInHasAskedIsNotAskedAgain) {
    is_full();
    for (const char* capture :
         {"dmidecode.log", "dmesg.log", "cpuinfo.log", "cmdline.log", "sensorinfo.txt",
          "sdrinfo.txt", "selfinfo.txt", "selinfo.txt", "mcinfo.txt", "fruinfo.txt",
          "c0_showall.txt", "c1_showall.txt", "pdlist.txt", "c1_pdlist.txt", "c0_raidevents.txt",
          "c1_raidevents.txt"})
        has_capture(capture, "said\n");
    EXPECT_EQ(
        asked(),
        (Texts{
            "lspci > host_lspci.txt",
            "cat /etc/os-release > host_os_release.txt",
            "cat /etc/machine-id > host_machine_id.txt",
            "cat /proc/uptime > host_uptime.txt",
            "hostname > host_hostname.txt",
            "uname -r > host_uname.txt",
            "ipmitool sel info > host_sel_info.txt",
            "ipmitool chassis status > host_chassis_status.txt",
            "storcli show > host_storcli_show.txt",
            // The plug-in's c1_pdlist.txt has the drives of controller 0.
            "storcli /c1/eall/sall show all > host_storcli_c1_drives.txt",
            "storcli /c0/vall show all > host_storcli_c0_volumes.txt",
            "storcli /c1/vall show all > host_storcli_c1_volumes.txt",
            "storcli /c0/eall show all > host_storcli_c0_enclosures.txt",
            "storcli /c1/eall show all > host_storcli_c1_enclosures.txt",
            "cat /proc/mdstat > host_mdstat.txt",
            "mdadm --detail /dev/md0 > host_mdadm_md0.txt",
            "smartctl --scan -j > host_smartctl_scan.json",
            "smartctl -x -j /dev/sdc > host_smartctl_sdc.json",
            "smartctl -x -j /dev/nvme0 > host_smartctl_nvme0.json",
            "lsblk -J -b -o NAME,TYPE,SIZE,MODEL,SERIAL,WWN,ROTA,TRAN,LOG-SEC > host_lsblk.json",
        }));
}

// The plug-in's own tool failed: another one is asked for the same, but nothing in the same words.
TEST_F(Ask, WhatFailedIsAskedInOtherWordsAlone) {
    has_file("dev/ipmi0");
    has_tool("ipmitool");
    has_capture("selinfo.txt", "ipmiutil: cannot open\n");
    has_capture("sensorinfo.txt", "half a sen");
    has_capture("sdrinfo.txt", "");
    auto later = settings();
    later.for_verdicts_alone = true;
    const auto at = [&](const char* capture) { return ">'" + (log_dir / capture).string() + "'"; };
    later.earlier = {{"'/p/qv_tools/ipmiutil_x64_nh' sel " + at("selinfo.txt"), false},
                     {"ipmitool sensor " + at("sensorinfo.txt"), false},
                     {"ipmitool sdr elist 1" + at("sdrinfo.txt"), true}};
    EXPECT_EQ(asked(later),
              (Texts{"ipmitool mc selftest > host_selftest.txt",
                     "ipmitool sel info > host_sel_info.txt", "ipmitool sel elist > host_sel.txt",
                     "ipmitool chassis status > host_chassis_status.txt"}));
}

TEST_F(Ask, AToolThatHangsIsAskedOnce) {
    has_file("dev/ipmi0");
    for (const char* tool : {"ipmitool", "lspci", "dmesg", "dmidecode"}) has_tool(tool);
    statuses["ipmitool sensor"] = SIGKILL;
    auto quick = settings();
    quick.for_verdicts_alone = true;
    EXPECT_EQ(asked(quick),
              (Texts{"lspci > host_lspci.txt", "dmidecode > host_dmidecode.txt",
                     "dmesg > host_dmesg.txt", "ipmitool sensor > host_ipmitool_sensor.txt"}));
    EXPECT_EQ(lacks,
              (std::vector<Lack>{{"bmc", "ipmitool did not end in time and was not asked again"}}));

    // So it is after a plug-in's command was stopped; one that failed is asked on.
    quick.earlier = {{"ipmitool fru >'/log/fruinfo.txt'", false, true}};
    EXPECT_EQ(asked(quick).size(), 3u);
    quick.earlier = {{"ipmitool fru >'/log/fruinfo.txt'", false, false}};
    statuses.clear();
    forget_answers();
    EXPECT_EQ(asked(quick).size(), 9u);
}

TEST_F(Ask, FailuresOfOneQuestionKeepNoOtherFromBeingAsked) {
    is_full();
    const auto all = asked();
    forget_answers();
    for (const auto& question : {"dmidecode", "ipmitool sensor", "storcli /c0/vall show all",
                                 "smartctl -x -j /dev/sdc", "mdadm --detail /dev/md0"})
        statuses[question] = 1 << 8;
    EXPECT_EQ(asked(), all);
    EXPECT_EQ(lacks, std::vector<Lack>{});
}

TEST_F(Ask, AToolThatIsNeededAndMissingIsNamedWithItsPackage) {
    is_full();
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        const auto name = entry.path().filename();
        if (name != "lspci" && name != "cat") std::filesystem::remove(entry.path());
    }
    std::filesystem::remove(vendor_tools / "storcli_x64");
    const Texts expected{"lspci > host_lspci.txt",
                         "cat /proc/cpuinfo > host_cpuinfo.txt",
                         "cat /proc/cmdline > host_cmdline.txt",
                         "cat /etc/os-release > host_os_release.txt",
                         "cat /etc/machine-id > host_machine_id.txt",
                         "cat /proc/uptime > host_uptime.txt",
                         "cat /proc/mdstat > host_mdstat.txt"};
    EXPECT_EQ(asked(), expected);
    EXPECT_EQ(lacks,
              (std::vector<Lack>{
                  {"system", "dmidecode is not installed (Debian package dmidecode)"},
                  {"system", "dmesg is not installed (Debian package util-linux)"},
                  {"bmc", "ipmitool is not installed (Debian package ipmitool)"},
                  {"storage", "storcli is not installed (it comes from the controller's maker)"},
                  {"storage", "mdadm is not installed (Debian package mdadm)"},
                  {"storage", "smartctl is not installed (Debian package smartmontools)"},
              }))
        << "arcconf, sas2ircu, zpool and others are not needed here";
}

TEST_F(Ask, AToolThatMustNotRunIsToldOf) {
    has_file("dev/ipmi0");
    has_tool("ipmitool");
    auto wary = settings();
    wary.places.why_not_trusted = [](const std::filesystem::path& file) {
        return file.filename().string() + " can be written by others";
    };
    wary.for_verdicts_alone = true;
    EXPECT_EQ(asked(wary), Texts{});
    EXPECT_NE(
        std::find(lacks.begin(), lacks.end(), Lack{"bmc", "ipmitool can be written by others"}),
        lacks.end());
}

TEST_F(Ask, TheRenamedBuildThatKnowsAControllerIsAsked) {
    for (const char* tool : {"lspci", "storcli", "perccli64", "storcli2"}) has_tool(tool);
    answers = {{"lspci", kPci},
               {"storcli show", controller_list(0)},
               {"perccli64 show", controller_list(1)}};
    auto quick = settings();
    quick.for_verdicts_alone = true;
    EXPECT_EQ(asked(quick),
              (Texts{"lspci > host_lspci.txt", "storcli show > host_storcli_show.txt",
                     "perccli64 show > host_storcli_show.txt",
                     "perccli64 /c0 show all > host_storcli_c0_show.txt",
                     "perccli64 /c0 show > host_storcli_c0_show.txt",
                     "perccli64 /c0/eall/sall show all > host_storcli_c0_drives.txt"}))
        << "and what gave no answer is asked in other words";
}

TEST_F(Ask, AReplayAsksWhatIsRecordedAndLooksAtNoMachine) {
    is_full();
    has_file("etc/multipath.conf");
    auto replay = settings();
    replay.recorded = {{"lspci", ""},
                       {"storcli", "show ctrlcount"},
                       {"storcli", "/c0 show"},
                       {"ipmitool", "sensor"},
                       {"cat", "/proc/mdstat"},
                       {"arcconf", "getconfig 1"},
                       {"sas2ircu", "0 display"},
                       {"dmesg", std::nullopt},
                       {"smartctl", "--scan -j"},
                       {"smartctl", "-x -j /dev/nvme0"},
                       {"nothing", "that is here"}};
    answers["storcli show ctrlcount"] =
        "Status Code = 0\nStatus = Success\nDescription = None\n\nController Count = 1\n\n";
    const Texts expected{"lspci > host_lspci.txt",
                         "dmesg > host_dmesg.txt",
                         "ipmitool sensor > host_ipmitool_sensor.txt",
                         "storcli show ctrlcount > host_storcli_show.txt",
                         "storcli /c0 show > host_storcli_c0_show.txt",
                         "arcconf getconfig 1 > host_arcconf_1.txt",
                         "sas2ircu 0 display > host_sas2ircu_0_display.txt",
                         "cat /proc/mdstat > host_mdstat.txt",
                         "smartctl --scan -j > host_smartctl_scan.json",
                         "smartctl -x -j /dev/nvme0 > host_smartctl_nvme0.json"};
    EXPECT_EQ(asked(replay), expected);
    EXPECT_EQ(lacks, std::vector<Lack>{}) << "what was not recorded changes no verdict";

    std::filesystem::remove_all(root);
    forget_answers();
    EXPECT_EQ(asked(replay), expected) << "the machine itself plays no part";
    replay.recorded = std::vector<Recorded>{};
    EXPECT_EQ(asked(replay), Texts{});
}

// Files that somebody else has put there keep nothing from being asked, and say nothing.
TEST_F(Ask, ForeignFilesAreNoAnswers) {
    has_file("proc/mdstat");
    for (const char* tool : {"lspci", "cat"}) has_tool(tool);
    for (const char* name : {"host_lspci.txt", "host_mdstat.txt"}) has_capture(name, "words\n");
    auto given = settings();
    given.for_verdicts_alone = true;
    EXPECT_EQ(asked(given), Texts{});
    given.foreign = {"host_lspci.txt", "host_mdstat.txt"};
    EXPECT_EQ(asked(given),
              (Texts{"lspci > host_lspci.txt", "cat /proc/mdstat > host_mdstat.txt"}));
}

}  // namespace

}  // namespace test
