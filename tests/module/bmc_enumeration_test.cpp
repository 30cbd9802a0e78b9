#include <cerrno>

#include "bench.h"
#include "rbmcinfo/collectors.h"
#include "rbmcinfo/tools.h"

using namespace marlox::repository;

namespace {

constexpr const char* k3 = "log 3 qvmodules/rbmcinfo: [repo] ";

class BmcEnumeration : public Bench {
protected:
    BmcEnumeration() {
        fakehost::min_log_level = 3;
        tool("uname", "echo x86_64");
        tool("lsmod", "echo ipmi_devintf 1 0");
        for (const char* name : {"cat", "dmesg", "supportconfig", "sosreport", "mv", "service",
                                 "modprobe", "ipmitool"})
            tool(name, "exit 0");
        vendor_tool("ipmiutil_x64_nh", "exit 0");
    }
    void product(const std::string& name) {
        tool("dmidecode", prints("Product Name: " + name + "\n"));
    }
    std::string commands() {
        enumerate("BMC_Info", "MCINFO");
        return noted({"$"});
    }
};

const std::string kDetect = "$ dmidecode -t system 2>&1|grep 'Product Name'|awk -F: '{print $2}'\n";
const std::string kSystem =
    "$ chmod 544 'P/qv_tools'/*\n"
    "$ cat /proc/cmdline >'L/cmdline.log'\n"
    "$ cat /proc/cpuinfo >'L/cpuinfo.log'\n"
    "$ dmesg >'L/dmesg.log'\n"
    "$ dmidecode >'L/dmidecode.log'\n"
    "$ cat /proc/interrupts >'L/interrupts.log'\n"
    "$ supportconfig -R /tmp\n"
    "$ mv /tmp/nts_linux* 'L/'\n"
    "$ uname -i\n";
const std::string kStart =
    "$ service ipmi start 1>/dev/null 2>&1\n"
    "$ lsmod|grep ipmi_devintf|wc -l\n";
const std::string kMc = "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1\n";
const std::string kSelfTest = "$ ipmitool mc selftest 1>'L/selfinfo.txt' 2>&1\n";
const std::string kVersions =
    "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1\n";
const std::string kPsu = "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem psu 1>'L/psuinfo.txt' 2>&1\n";
const std::string kLan = "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem lan 1>'L/laninfo.txt' 2>&1\n";
const std::string kLed = "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem led 1>'L/ledinfo.txt' 2>&1\n";
const std::string kSensor = "$ ipmitool sensor 1>'L/sensorinfo.txt' 2>&1\n";
const std::string kFru = "$ ipmitool fru  1>'L/fruinfo.txt' 2>'L/fruinfo.txt'\n";
const std::string kSdr = "$ ipmitool sdr elist 1>'L/sdrinfo.txt' 2>'L/sdrinfo.txt'\n";
const std::string kEnd =
    "$ 'P/qv_tools/ipmiutil_x64_nh' sel -t 1>'L/selinfo.txt' 2>&1\n"
    "$ 'P/qv_tools/ipmiutil_x64_nh' sel -r >'L/SEL_Hex.txt'\n"
    "$ 'P/qv_tools/ipmiutil_x64_nh' sensor >'L/sensor_with_id_string.txt'\n"
    "$ service ipmi stop 1>/dev/null 2>&1\n";

TEST_F(BmcEnumeration, CommandsByKind) {
    struct Case {
        const char* product;
        std::string commands;
    };
    const auto reduced = kStart + kMc + kSelfTest + kLan + kSensor + kFru + kEnd;
    const Case cases[] = {
        {"KP120",
         kStart + kMc + kSelfTest + kVersions + kPsu + kLan + kLed + kSensor + kFru + kSdr + kEnd},
        {"KN100",
         kStart + kMc + kSelfTest + kVersions + kPsu + kLan + kSensor + kSdr + kFru + kEnd},
        {"KM801", reduced},
        {"KP310", reduced},
        {"other", ""},
    };
    for (const auto& [name, after_the_system] : cases) {
        product(name);
        forget_modules();
        EXPECT_EQ(commands(), kDetect + kSystem + after_the_system) << name;
    }
}

TEST_F(BmcEnumeration, ReducedKindsLogTheirSteps) {
    product("KM801");
    enumerate("BMC_Info", "SELINFO");
    const auto log = noted({"log"});
    const auto from = log.find(k3 + std::string("ipmi_devintf is loaded\n"));
    ASSERT_NE(from, std::string::npos);
    EXPECT_EQ(
        log.substr(from),
        std::string(k3) + "ipmi_devintf is loaded\n" + k3 +
            "mc final path:'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1\n" + k3 +
            "Oru Debug after bmc info\n" + k3 + "Oru Debug after sensor info\n" + k3 +
            "Oru Debug after sdr info\n" + k3 + "Oru Debug fru info 4\n" + k3 +
            "Oru Debug after fru info\n" + k3 + "Oru Debug after sel info\n" + k3 +
            "Oru Debug after selhex\n" + k3 + "Oru Debug after sen_id\n" + k3 +
            "Exit CollectData-BMC related info\n" + k3 + "Exit EnumBMCInstances\n");
}

TEST_F(BmcEnumeration, ASecondCallRunsNothing) {
    product("KP120");
    commands();
    EXPECT_EQ(std::string(fullpath), log_dir);
    enumerate("BMC_Info", "SDRINFO");
    EXPECT_EQ(noted(),
              std::string(k3) + "Enter EnumBMCInstances\n" + k3 + "Exit EnumBMCInstances\n");
}

TEST_F(BmcEnumeration, NoProgramDirectory) {
    fake_system.exe_link_error = EACCES;
    fakehost::min_log_level = 4;
    enumerate("BMC_Info", "MCINFO");
    EXPECT_EQ(noted(), std::string(k3) + "Enter EnumBMCInstances\n" + k3 +
                           "Enter CollectData-BMC related info\n" + k3 +
                           "Failed to get the Marlox path, exit\n" + k3 +
                           "Exit EnumBMCInstances\n");
    fake_system.exe_link_error = 0;
    enumerate("BMC_Info", "MCINFO");  // not tried again
    EXPECT_EQ(noted({"$"}), "");
}

TEST_F(BmcEnumeration, AnUnreadableProductNameEndsAll) {
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    enumerate("BMC_Info", "MCINFO");
    EXPECT_EQ(noted(), std::string(k3) + "Enter EnumBMCInstances\n" + k3 +
                           "Enter CollectData-BMC related info\n" + kDetect + k3 +
                           "Fail to get the Product Name\n" + k3 + "Exit EnumBMCInstances\n");
}

TEST_F(BmcEnumeration, AnUnknownWordSizeEndsBeforeTheService) {
    product("KP120");
    fake_system.spawn_error = [](std::string_view command) {
        return command == "uname -i" ? EAGAIN : 0;
    };
    EXPECT_EQ(commands(), kDetect + kSystem);
}

TEST_F(BmcEnumeration, AServiceThatDoesNotStart) {
    struct Case {
        const char* script;
        int spawn_error;
        const char* message;
    };
    const Case cases[] = {
        {"exit 0", EAGAIN,
         "Failed to start IPMI service, could not be able to get BMC related info\n"},
        {"exit 5", 0, "Failed to start IPMI service,exit code:5\n"},
        // The tool ends below a shell that survives, or takes the shell with it.
        {"kill -15 $$", 0, "Failed to start IPMI service,exit code:143\n"},
        {"kill -9 $PPID", 0, "Signal terminal while starting IPMI service,exit status:0\n"},
    };
    for (const auto& [script, error, message] : cases) {
        product("KP120");
        tool("service", script);
        fake_system.spawn_error = [error = error](std::string_view command) {
            return command.starts_with("service") ? error : 0;
        };
        forget_modules();
        enumerate("BMC_Info", "MCINFO");
        const auto all = fakehost::notes;
        EXPECT_EQ(noted({"$"}), kDetect + kSystem + "$ service ipmi start 1>/dev/null 2>&1\n");
        fakehost::notes = all;
        const auto log = noted({"log"});
        const auto end = std::string(k3) + message + k3 + "Exit EnumBMCInstances\n";
        EXPECT_TRUE(log.ends_with(end)) << log;
    }
}

TEST_F(BmcEnumeration, TheDriverIsLoadedUnlessItIsThere) {
    product("KM801");
    tool("lsmod", "exit 0");
    EXPECT_NE(commands().find("$ lsmod|grep ipmi_devintf|wc -l\n"
                              "$ modprobe ipmi_devintf 1>/dev/null 2>&1\n"),
              std::string::npos);
    forget_modules();
    fake_system.spawn_error = [](std::string_view command) {
        return command.starts_with("lsmod") ? EAGAIN : 0;
    };
    EXPECT_NE(commands().find("$ lsmod|grep ipmi_devintf|wc -l\n"
                              "$ modprobe ipmi_devintf 1>/dev/null 2>&1\n"),
              std::string::npos);
}

TEST_F(BmcEnumeration, RecordsDoNotDependOnTheLogLevel) {
    product("KP120");
    tool("ipmitool", prints("a:1\nb|2\n"));
    vendor_tool("ipmiutil_x64_nh", prints("c-1\nd:2\n"));
    std::vector<std::string> results;
    for (const unsigned level : {2u, 3u, 4u}) {
        fakehost::min_log_level = level;
        forget_modules();
        enumerate("BMC_Info", "MCINFO");
        results.push_back(noted({"$", "add"}));
        EXPECT_NE(results.back().find("add SELINFO"), std::string::npos);
    }
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[1], results[2]);

    fakehost::min_log_level = 2;
    forget_modules();
    enumerate("BMC_Info", "MCINFO");
    EXPECT_EQ(noted({"log"}), "");
}

TEST_F(BmcEnumeration, WhatTheHostThrowsPassesThrough) {
    product("KP120");
    tool("ipmitool", prints("a:1\n"));
    vendor_tool("ipmiutil_x64_nh", prints("c:1\n"));
    const auto open_files = [] {
        const std::filesystem::directory_iterator fds("/proc/self/fd");
        return std::distance(begin(fds), end(fds));
    };
    const auto before = open_files();
    for (int failing = 1; failing <= 6; ++failing) {
        fakehost::records_until_failure = failing;
        forget_modules();
        EXPECT_THROW(enumerate("BMC_Info", "MCINFO"), std::runtime_error);
    }
    EXPECT_EQ(open_files(), before);
}

TEST_F(BmcEnumeration, SystemArchiveByDistribution) {
    struct Case {
        bool redhat;
        bool nxbr;
        std::string notes;
    };
    const Case cases[] = {
        {true, false,
         std::string(k3) + "Redhat linux, using sosreport command to collect sos info\n"
                           "$ sosreport --batch --name=OSlogs --tmp-dir=/tmp\n"
                           "$ mv /tmp/sosreport-OSlogs-* 'L/'\n"},
        {true, true,
         std::string(k3) + "Redhat linux, using sosreport command to collect sos info\n"
                           "$ sosreport --batch --name=OSlogs --tmp-dir=/tmp\n"
                           "$ mv /tmp/sosreport-OSlogs-* 'L/'\n"},
        {false, true, ""},
        {false, false,
         std::string(k3) + "SUSE linux, using supportconfig command to collect sos info\n"
                           "$ supportconfig -R /tmp\n"
                           "$ mv /tmp/nts_linux* 'L/'\n"},
    };
    tool("mv", "exit 7");
    for (const auto& [redhat, nxbr, notes] : cases) {
        fake_system.exists = {{"/etc/redhat-release", redhat}, {"/etc/NXBR-release", nxbr}};
        EXPECT_EQ(sos(), notes.empty() ? 0 : 7 << 8);
        EXPECT_EQ(noted(), notes);
    }
}

TEST_F(BmcEnumeration, SystemCaptures) {
    tool("dmesg", "echo kernel; exit 3");
    EXPECT_EQ(dmesg(), 3 << 8);
    EXPECT_EQ(log_file("dmesg.log"), "kernel\n");
    tool("cat", "echo \"$*\"");
    EXPECT_EQ(mingling(), 0);
    EXPECT_EQ(log_file("cmdline.log"), "/proc/cmdline\n");
    EXPECT_EQ(cpuinfo(), 0);
    EXPECT_EQ(log_file("cpuinfo.log"), "/proc/cpuinfo\n");
    EXPECT_EQ(interrupts(), 0);
    EXPECT_EQ(log_file("interrupts.log"), "/proc/interrupts\n");
}

TEST_F(BmcEnumeration, BiosSettings) {
    fakehost::min_log_level = 4;
    EXPECT_NE(get_bios_settings(), 0);  // neither release file
    EXPECT_EQ(noted(), "");

    fake_system.exists = {{"/etc/redhat-release", false}, {"/etc/NXBR-release", true}};
    vendor_tool("SCELNX_64", "[ \"$1 $2\" = '/o /s' ] && echo settings > \"$3\"");
    EXPECT_EQ(get_bios_settings(), 0);
    EXPECT_EQ(log_file("bios_settings.txt"), "settings\n");
    const std::string said =
        "log 4 qvmodules/rbmcinfo: [repo] get bios settings, the final command line:";
    EXPECT_EQ(noted(), said +
                           "'P/qv_tools/SCELNX_64' /o /s 'L/bios_settings.txt'\n"
                           "$ 'P/qv_tools/SCELNX_64' /o /s 'L/bios_settings.txt'\n");
    linux_x32_x64 = 32;
    get_bios_settings();
    EXPECT_EQ(noted({"$"}), "$ 'P/qv_tools/SCELNX_32' /o /s 'L/bios_settings.txt'\n");
    linux_x32_x64 = 16;
    EXPECT_NE(get_bios_settings(), 0);
    EXPECT_EQ(noted({"$"}), "$ 'P/L/bios_settings.txt'\n");
}

}  // namespace
