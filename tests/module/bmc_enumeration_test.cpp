// The BMC module's one pass: which steps it takes on which server, and what each of them leaves behind.
#include <signal.h>

#include <cerrno>
#include <iterator>

#include "bench.h"
#include "bmc_notes.h"
#include "rbmcinfo/items.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class BmcEnumeration : public Bench {
protected:
    BmcEnumeration() {
        tool("uname", "echo x86_64");
        tool("lsmod", "echo ipmi_devintf 1 0");
        for (const char* name :
             {"cat", "dmesg", "supportconfig", "sosreport", "mv", "service", "modprobe"})
            tool(name, "exit 0");
        product("KP120");
        tool("ipmitool", by_arguments({
                             {"mc selftest", "echo Selftest: passed"},
                             {"sensor", "echo 'CPU|1|C|ok|a|b|c|d|e|f'"},
                             {"sdr elist", "echo sdr"},
                             {"fru", "echo fru"},
                         }));
        vendor_tool("ipmiutil_x64_nh", by_arguments({
                                           {"dorvanoem mc", "echo 'Device ID: 32'"},
                                           {"dorvanoem ver", "echo BMC:1.2"},
                                           {"dorvanoem psu", "echo psu"},
                                           {"dorvanoem lan", "echo IP-192.0.2.1"},
                                           {"dorvanoem led", "echo led"},
                                           {"sel -t", "echo event"},
                                           {"sel -r", "echo 01 02"},
                                           {"sensor", "echo 0001 CPU"},
                                       }));
    }
    void product(const std::string& name) {
        tool("dmidecode", prints("Product Name: " + name + "\n"));
    }
    std::string collected(unsigned level = 4) {
        fakehost::min_log_level = level;
        forget_modules();
        enumerate("BMC_Info", "MCINFO");
        return noted();
    }
    static std::ptrdiff_t open_files() {
        const std::filesystem::directory_iterator fds("/proc/self/fd");
        return std::distance(begin(fds), end(fds));
    }
};

// The steps, each with all that it does, in short form.
const std::string kEnter = R"(
3 Enter EnumBMCInstances
3 Enter CollectData-BMC related info
)";
const std::string kDetect = R"(
4 value of current_absolute_path_bmc:P/
$ dmidecode -t system 2>&1|grep 'Product Name'|awk -F: '{print $2}'
)";
const std::string kSystem = R"(
$ chmod 544 'P/qv_tools'/*
$ cat /proc/cmdline >'L/cmdline.log'
$ cat /proc/cpuinfo >'L/cpuinfo.log'
$ dmesg >'L/dmesg.log'
$ dmidecode >'L/dmidecode.log'
$ cat /proc/interrupts >'L/interrupts.log'
3 SUSE linux, using supportconfig command to collect sos info
$ supportconfig -R /tmp
$ mv /tmp/nts_linux* 'L/'
$ uname -i
)";
const std::string kService = "$ service ipmi start 1>/dev/null 2>&1\n";
const std::string kDriver = R"(
4 Start IPMI service successfully
$ lsmod|grep ipmi_devintf|wc -l
3 check ipmi_devintf load status:1
3 ipmi_devintf is loaded
)";
const std::string kController = R"(
4 exe ipmiutil dorvanoem mc
3 mc final path:'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1
4 Get MC info successfully
4 se:Device ID: 32\n
4 From vector:
4 Device ID:  32
add MCINFO "MC Information" -1: MC1 "Device ID"=" 32"
)";
const std::string kSelfTest = R"(
4 exe ipmitool mc selftest
$ ipmitool mc selftest 1>'L/selfinfo.txt' 2>&1
4 Get selftest info successfully
4 se:Selftest: passed\n
4 From vector:
4 Selftest:  passed
add SELFINFO "QVM Selftest" -1: self1 "Selftest"=" passed"
)";
const std::string kVersions = R"(
4 exe ipmiutil dorvanoem ver
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1
4 Get version info successfully
4 se:BMC:1.2\n
4 From vector:
4 BMC: 1.2
add VERINFO "Version Information" -1: VER1 "BMC"="1.2"
)";
const std::string kPowerSupplies = R"(
4 exe ipmiutil dorvanoem psu
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem psu 1>'L/psuinfo.txt' 2>&1
4 Get PSU info successfully
4 se:psu\n
4 psu
add PSUINFO "PSU Information" -1: PSUINFO "PSU Detailed Info"="psu"
)";
const std::string kLan = R"(
4 exe ipmiutil dorvanoem lan
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem lan 1>'L/laninfo.txt' 2>&1
4 Get LAN info successfully
4 se:IP-192.0.2.1\n
4 From vector:
4 IP: 192.0.2.1
add LANINFO "LAN Information" -1: LAN1 "IP"="192.0.2.1"
)";
const std::string kLeds = R"(
4 exe ipmiutil dorvanoem led
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem led 1>'L/ledinfo.txt' 2>&1
4 Get LED info successfully
4 se:led\n
4 led
add LEDINFO "LEDs Status" -1: LEDINFO "LED Detailed Status"="led"
)";
const std::string kSensor =
    R"(
4 start to run ipmitool sensor command
$ ipmitool sensor 1>'L/sensorinfo.txt' 2>&1
4 Get sensor info successfully
4 se:CPU|1|C|ok|a|b|c|d|e|f\n
)"
    R"(add SENSORINFO "Sensor Status" -1: item1 "Name"="CPU", item2 "Reading"="1", )"
    R"(item3 "Units"="C", item4 "Status"="ok", item5 "LNR"="a", item6 "LC"="b", )"
    R"(item7 "LNC"="c", item8 "UNC"="d", item9 "UC"="e", item10 "UNR"="f"
)";
const std::string kSdr = R"(
$ ipmitool sdr elist 1>'L/sdrinfo.txt' 2>'L/sdrinfo.txt'
4 Get SDR info successfully
4 se:sdr\n
)"
                         "4 sdr \n"
                         R"(
add SDRINFO "SDR Information" -1: SDRINFO "SDR Detailed Info"="sdr"
)";
const std::string kFru = R"(
$ ipmitool fru  1>'L/fruinfo.txt' 2>'L/fruinfo.txt'
4 Get FRU info successfully
3 Oru Debug fru info 4
add FRUINFO "FRU Information" -1: FRUINFO "FRU Detailed Info"="fru\n"
)";
const std::string kSel = R"(
$ 'P/qv_tools/ipmiutil_x64_nh' sel -t 1>'L/selinfo.txt' 2>&1
4 Get SEL info successfully
add SELINFO "SEL Information" -1: SELINFO "SEL Info"="event\n"
)";
const std::string kSelInHex = "$ 'P/qv_tools/ipmiutil_x64_nh' sel -r >'L/SEL_Hex.txt'\n";
const std::string kSensorsWithIds =
    "$ 'P/qv_tools/ipmiutil_x64_nh' sensor >'L/sensor_with_id_string.txt'\n";
const std::string kStop = R"(
$ service ipmi stop 1>/dev/null 2>&1
3 Exit CollectData-BMC related info
)";
const std::string kExit = "3 Exit EnumBMCInstances\n";

struct Server {
    const char* product;
    std::string steps;  // behind the product's name
};

const std::string kReduced =
    kSystem + kService + kDriver + kController + kSelfTest + kLan + "3 Oru Debug after bmc info\n" +
    kSensor + "3 Oru Debug after sensor info\n3 Oru Debug after sdr info\n" + kFru +
    "3 Oru Debug after fru info\n" + kSel + "3 Oru Debug after sel info\n" + kSelInHex +
    "3 Oru Debug after selhex\n" + kSensorsWithIds + "3 Oru Debug after sen_id\n" + kStop;

const std::string kGrantley = "3 Grantley 4R1T or KV900, has BMC, return 5\n";

const Server kServers[] = {
    {"KP120", kGrantley + kSystem + kService + kDriver + kController + kSelfTest + kVersions +
                  kPowerSupplies + kLan + kLeds + kSensor + kFru + kSdr + kSel + kSelInHex +
                  kSensorsWithIds + kStop},
    {"KN100", "3 fjord(kn100), has BMC(no led), return 7\n" + kSystem + kService + kDriver +
                  kController + kSelfTest + kVersions + kPowerSupplies + kLan + kSensor + kSdr +
                  kFru + kSel + kSelInHex + kSensorsWithIds + kStop},
    {"KM801",
     "3 KL010 or KL020 or KP220E or AMD KM801 or AMD KM802, has BMC, return 9\n" + kReduced},
    {"KP310", "3 IVB 4R1T, has BMC, return 11\n" + kReduced},
    // No BMC: the system's own captures are made all the same.
    {"other", "3 No BMC, return 4\n" + kSystem},
};

TEST_F(BmcEnumeration, AllThatHappensByServerAndLogLevel) {
    for (const auto& [name, steps] : kServers) {
        product(name);
        const auto expected =
            kEnter + kDetect + "3 Product name(20bytes): " + name + "\\n\n" + steps + kExit;
        for (const unsigned level : {2u, 3u, 4u})
            EXPECT_EQ(collected(level), bmc_notes(expected, level)) << name << " " << level;
    }
}

const std::string kUntilService =
    kEnter + kDetect + "3 Product name(20bytes): KP120\\n\n" + kGrantley + kSystem + kService;

TEST_F(BmcEnumeration, CapturesStayInTheLogDirectory) {
    collected();
    EXPECT_EQ(log_file("mcinfo.txt"), "Device ID: 32\n");
    EXPECT_EQ(log_file("SEL_Hex.txt"), "01 02\n");
    EXPECT_EQ(log_file("sensor_with_id_string.txt"), "0001 CPU\n");
}

// The results of the captures are not looked at.
TEST_F(BmcEnumeration, FailedCapturesDoNotEndTheCollection) {
    tool("ipmitool", "exit 3");
    vendor_tool("ipmiutil_x64_nh", "exit 4");
    collected();
    product("KM801");
    EXPECT_EQ(
        collected(3), bmc_notes(kEnter + kDetect + R"(
3 Product name(20bytes): KM801\n
3 KL010 or KL020 or KP220E or AMD KM801 or AMD KM802, has BMC, return 9
)" + kSystem + kService + kDriver + R"(
3 mc final path:'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1
3 Failed to get MC info,exit code:4
$ ipmitool mc selftest 1>'L/selfinfo.txt' 2>&1
add SELFINFO "QVM Selftest" -1:
$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem lan 1>'L/laninfo.txt' 2>&1
3 Failed to get LAN info,exit code:4
3 Oru Debug after bmc info
$ ipmitool sensor 1>'L/sensorinfo.txt' 2>&1
3 Failed to get sensor info,exit code:3
3 Oru Debug after sensor info
3 Oru Debug after sdr info
$ ipmitool fru  1>'L/fruinfo.txt' 2>'L/fruinfo.txt'
3 Failed to get FRU info,exit code:3
3 Oru Debug after fru info
$ 'P/qv_tools/ipmiutil_x64_nh' sel -t 1>'L/selinfo.txt' 2>&1
3 Failed to get SEL info,exit code:4
3 Oru Debug after sel info
)" + kSelInHex + "3 Oru Debug after selhex\n" +
                                    kSensorsWithIds + "3 Oru Debug after sen_id\n" + kStop + kExit,
                                3));
}

TEST_F(BmcEnumeration, TheUtilityFollowsTheWordSize) {
    tool("uname", "echo i686");
    vendor_tool("ipmiutil_x32_nh", "exec \"${0%32_nh}64_nh\" \"$@\"");
    auto expected =
        kEnter + kDetect + "3 Product name(20bytes): KP120\\n\n" + kServers[0].steps + kExit;
    for (auto at = expected.find("_x64_nh"); at != std::string::npos; at = expected.find("_x64_nh"))
        expected.replace(at, 4, "_x32");
    EXPECT_EQ(collected(), bmc_notes(expected));
}

TEST_F(BmcEnumeration, ASecondCallRunsNothing) {
    collected();
    EXPECT_EQ(fullpath, log_dir);
    use_log_dir("other");
    enumerate("BMC_Info", "SDRINFO");
    EXPECT_EQ(noted(), bmc_notes("3 Enter EnumBMCInstances\n3 Exit EnumBMCInstances\n"));
    EXPECT_EQ(fullpath, log_dir);
}

TEST_F(BmcEnumeration, LayoutsDoNotDependOnWhatWasCollected) {
    vendor_tool("ipmiutil_x64_nh", prints("a:1\n"));
    collected();
    EXPECT_EQ(mc_item_size, 1u);
    wrap("BMC_Info", "MCINFO");
    EXPECT_EQ(noted(), "columns: MC1 MC2 MC3 MC4 MC5 MC6 MC7 MC8 MC9 / 30 1\n");
}

TEST_F(BmcEnumeration, CountsOfLabels) {
    collected();
    EXPECT_EQ(mc_item_size, 1u);
    EXPECT_EQ(self_item_size, 1u);
    EXPECT_EQ(ver_item_size, 1u);
    EXPECT_EQ(lan_item_size, 1u);
    EXPECT_EQ(led_item_size, 0u);
    EXPECT_EQ(psu_item_size, 0u);
    EXPECT_EQ(fru_item_size, 0u);
}

TEST_F(BmcEnumeration, NoProgramDirectory) {
    fake_system.exe_link_error = EACCES;
    EXPECT_EQ(collected(), bmc_notes(kEnter + "3 Failed to get the Marlox path, exit\n" + kExit));
    fake_system.exe_link_error = 0;
    enumerate("BMC_Info", "MCINFO");  // not tried again
    EXPECT_EQ(noted({"$"}), "");
}

TEST_F(BmcEnumeration, AnUnreadableProductNameEndsAll) {
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    EXPECT_EQ(collected(),
              bmc_notes(kEnter + kDetect + "3 Fail to get the Product Name\n" + kExit));
    fake_system.spawn_error = {};
    enumerate("BMC_Info", "MCINFO");
    EXPECT_EQ(noted({"$"}), "");
}

TEST_F(BmcEnumeration, AnUnknownWordSizeEndsBeforeTheService) {
    fake_system.spawn_error = [](std::string_view command) {
        return command == "uname -i" ? EAGAIN : 0;
    };
    EXPECT_EQ(collected(),
              bmc_notes(kEnter + kDetect + "3 Product name(20bytes): KP120\\n\n" + kGrantley +
                        kSystem + "3 Fail to get the Linux OS structure\n" + kExit));
}

TEST_F(BmcEnumeration, AServiceThatDoesNotStartIsNotStopped) {
    struct Case {
        std::string script;
        int spawn_error;
        std::string message;
    };
    const Case cases[] = {
        {"exit 0", EAGAIN,
         "3 Failed to start IPMI service, could not be able to get BMC related info\n"},
        {"exit 5", 0, "3 Failed to start IPMI service,exit code:5\n"},
        // As the shell tells of a child that was killed.
        {"exit 143", 0, "3 Failed to start IPMI service,exit code:143\n"},
        {dies_by(SIGKILL), 0, "3 Signal terminal while starting IPMI service,exit status:0\n"},
    };
    for (const auto& [script, error, message] : cases) {
        tool("service", script);
        fake_system.spawn_error = [error = error](std::string_view command) {
            return command.starts_with("service") ? error : 0;
        };
        EXPECT_EQ(collected(), bmc_notes(kUntilService + message + kExit));
        enumerate("BMC_Info", "MCINFO");
        EXPECT_EQ(noted({"$"}), "");
    }
}

TEST_F(BmcEnumeration, TheDriverIsLoadedUnlessItIsThere) {
    const std::string started = "4 Start IPMI service successfully\n";
    const std::string asked = "$ lsmod|grep ipmi_devintf|wc -l\n";
    const std::string modprobe = "$ modprobe ipmi_devintf 1>/dev/null 2>&1\n";
    const auto captures = kServers[0].steps.substr(kServers[0].steps.find(kController));

    tool("lsmod", "exit 0");
    tool("modprobe", "exit 1");  // its status is not looked at
    EXPECT_EQ(collected(), bmc_notes(kUntilService + started + asked +
                                     "3 check ipmi_devintf load status:0\n"
                                     "3 ipmi_devintf is not loaded\n" +
                                     modprobe + captures + kExit));
    fake_system.spawn_error = [](std::string_view command) {
        return command.starts_with("lsmod") ? EAGAIN : 0;
    };
    EXPECT_EQ(collected(), bmc_notes(kUntilService + started + asked +
                                     "3 Fail to get the status of ipmi_devintf module\n" +
                                     modprobe + captures + kExit));
}

TEST_F(BmcEnumeration, WhatTheHostThrowsPassesThroughAndLeavesNothingOpen) {
    constexpr int kRecords = 10;  // one a table
    const auto before = open_files();
    for (int failing = 1; failing <= kRecords; ++failing) {
        fakehost::records_until_failure = failing;
        EXPECT_THROW(collected(), std::runtime_error) << failing;
        EXPECT_EQ(open_files(), before) << failing;
        fakehost::notes.clear();
    }
    fakehost::records_until_failure = kRecords + 1;
    EXPECT_NO_THROW(collected());
    EXPECT_EQ(open_files(), before);
}

}  // namespace
