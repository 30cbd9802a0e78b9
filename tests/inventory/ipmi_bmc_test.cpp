// The BMC itself and what it manages: self test, mc info, lan, FRUs, power supplies, lamps, versions.
#include <gtest/gtest.h>

#include "inventory/ipmi/join.h"
#include "inventory/ipmi/readers.h"
#include "inventory/system/readers.h"
#include "reading_text.h"

namespace qvhost::inventory::test {
namespace {

TEST(Selftest, ResultsAndTheirDetails) {
    struct Case {
        std::string_view text, all;
    };
    for (
        const auto& [text, all] : {
            Case{"Selftest: passed\n", "bmcs 1: self_test=passed\n"},
            Case{"Selftest: passed", "bmcs 1: self_test=passed\n"},
            Case{"IANA PEN registry open failed: No such file or directory\r\nSelftest: passed\r\n",
                 "bmcs 2: self_test=passed\n"},
            Case{
                "Selftest: device corrupted\n -> SEL device not accessible\n -> SDR repository empty\n",
                "bmcs 1: self_test=device corrupted, SEL device not accessible, SDR repository empty\n"},
            Case{"Selftest     : fatal error\nFailure code : 01\n",
                 "bmcs 1: self_test=fatal error, Failure code : 01\n"},
            Case{
                "Selftest: pas",
                "gap 1: the capture ends in the middle of a line\ngap 1: no result of the self test\n"},
            Case{"Selftest failed: timeout\n",
                 "gap 1: no result of the self test\nerror 1: Selftest failed: timeout\n"},
            Case{"", ""},
        }) {
        EXPECT_EQ(read(text, read_selftest).all(), all);
    }
}

TEST(McInfo, FirmwareAndVersion) {
    EXPECT_EQ(read("Device ID                 : 32\n"
                   "Firmware Revision         : 2.71\n"
                   "IPMI Version              : 2.0\n"
                   "Manufacturer Name         : Unknown (0xF4240)\n"
                   "Additional Device Support :\n"
                   "    Sensor Device\n"
                   "    Chassis Device\n"
                   "Aux Firmware Rev Info     : \n"
                   "    0x00\n"
                   "    0x14",
                   read_mc_info)
                  .all(),
              "bmcs 2: firmware=2.71 ipmi=2.0\n");
    EXPECT_EQ(
        read(
            "Device ID: 33\r\nFirmware Revision: 1.07\r\nIPMI Version: 2.0\r\nSelf Test: passed\r\n"
            "Aux Firmware Rev Info: 0x00000000\r\nColour: blue\r\n",
            read_mc_info)
            .all(),
        "bmcs 2: firmware=1.07 ipmi=2.0 self_test=passed\nnot understood: 1 from 6\n");
    EXPECT_EQ(
        read("Device ID             : 32\nFirmware Rev", read_mc_info).all(),
        "gap 2: the capture ends in the middle of a line\ngap 2: no firmware revision or no IPMI version\n");
    EXPECT_EQ(
        read("Device ID : 32\nBad response length, len=1\n", read_mc_info).all(),
        "gap 2: no firmware revision or no IPMI version\nerror 2: Bad response length, len=1\n");
}

TEST(Lan, AddressOfAMakersAnswer) {
    EXPECT_EQ(read("IP Address  - 0.0.0.0\nMAC Address - 00:00:00:00:00:00\n", read_oem_lan).all(),
              "bmcs 1:\n");
    EXPECT_EQ(
        read("IP Source   - Static\nIP Address  - 192.0.2.81\nMAC Address - 02:00:00:00:80:11\n"
             "IPv6        - 2001:db8::80:11\nVLAN\n",
             read_oem_lan)
            .all(),
        "bmcs 2: address=192.0.2.81 mac=02:00:00:00:80:11\n");
    EXPECT_EQ(read("IP Address  - 192.0.2.2", read_oem_lan).all(),
              "gap 1: the capture ends in the middle of a value\ngap 1: no address\n");
}

constexpr std::string_view kFrus =
    "FRU Device Description : Builtin FRU Device (ID 0)\n"
    " Chassis Type          : Rack Mount Chassis\n"
    " Chassis Serial        : CH0012345\n"
    " Board Mfg Date        : Sun Jan  1 00:00:00 2023 UTC\n"
    " Board Mfg             : Example Boards\n"
    " Board Product         : EX-MB-7G\n"
    " Board Serial          : MB1234567890\n"
    " Board Part Number     : EX-MB-7G-01\n"
    " Product Manufacturer  : Example Systems\n"
    " Product Name          : EX2000 Rack Server\n"
    " Product Serial        : SYS0001234\n"
    "\n"
    "FRU Device Description : PS1 (ID 1)\n"
    " Board Product         : PWR SPLY,495W,RDNT            \n"
    " Board Serial          : 0000000000\n"
    "\n"
    "FRU Device Description : PS2 (ID 2)\n"
    " Device not present (Timeout)\n"
    "\n"
    "FRU Device Description : Riser1 FRU (ID 4)\n"
    " Unknown FRU header version 0xff\n"
    "\n"
    "FRU Device Description : CPU 1 DIMM 1 (ID 110)\n"
    " Memory Type           : DDR3 SDRAM\n"
    " Manufacturer          : Unknown (0x00)\n"
    " Serial Number         : e08f54c1\n"
    "\n";

TEST(Fru, TheProductGoesBeforeTheBoard) {
    EXPECT_EQ(
        read(kFrus, read_fru).all(),
        "frus 1: device=Builtin FRU Device (ID 0) manufacturer=Example Systems product=EX2000 Rack Server "
        "part=EX-MB-7G-01 serial=SYS0001234\n"
        "frus 13: device=PS1 (ID 1) product=PWR SPLY,495W,RDNT\n"
        "frus 20: device=Riser1 FRU (ID 4)\n"
        "frus 23: device=CPU 1 DIMM 1 (ID 110) serial=e08f54c1\n");
    EXPECT_EQ(read(with_crlf(kFrus), read_fru).all(), read(kFrus, read_fru).all());
}

TEST(Fru, WithoutAHeadingAndCutOff) {
    EXPECT_EQ(
        read(" Product Manufacturer  : Example\n Product Serial        : S1\n", read_fru).all(),
        "frus 1: manufacturer=Example serial=S1\n");
    EXPECT_EQ(read(" Product Manufacturer  : Example\n Product Serial        : S", read_fru).all(),
              "frus 1: manufacturer=Example\ngap 2: the capture ends in the middle of a value\n");
    EXPECT_EQ(
        read("Could not open device at /dev/ipmi0 or /dev/ipmi/0: No such file or directory\n",
             read_fru)
            .all(),
        "gap 1: no FRU\nerror 1: Could not open device at /dev/ipmi0 or /dev/ipmi/0: No such file or directory\n");
    EXPECT_EQ(read("\n", read_fru).all(), "gap 1: no FRU\n");
}

// The shell, or the tool on standard error, writes over the beginning of the answer.
TEST(Fru, WhoseHeadingIsOverwrittenIsNone) {
    const std::string answer(kFrus);
    const std::string_view rest =
        "frus 14: device=PS1 (ID 1) product=PWR SPLY,495W,RDNT\n"
        "frus 21: device=Riser1 FRU (ID 4)\n"
        "frus 24: device=CPU 1 DIMM 1 (ID 110) serial=e08f54c1\n"
        "gap 2: messages may stand over the beginning of the line\n";
    const std::string killed = "Killed\n";
    EXPECT_EQ(read(killed + answer.substr(killed.size()), read_fru).all(),
              std::string(rest) + "error 1: Killed\n");
    // Messages that go before the answer leave it whole.
    EXPECT_EQ(read(killed + answer, read_fru).found.frus.size(), 4U);
    EXPECT_EQ(read("Error: Unable to open\nError: no more\n" + answer, read_fru).how.gaps.size(),
              0U);
}

TEST(PowerSupplies, FormsOfThreeMakers) {
    EXPECT_EQ(
        read("Power supply 1: present, AC ok, output on\n"
             "  Model: EX PS800, firmware 4.52, serial PS A1 0001\n"
             "  Input 231.0 V 1.12 A 246 W, output 12.1 V 19.4 A 235 W\n"
             "  Temperature 34 degrees C, fan 5400 RPM\n"
             "Power supply 2: not present\n"
             "\n"
             "Redundancy: full\n",
             read_oem_power_supplies)
            .all(),
        "power_supplies 1: slot=Power supply 1 present=yes state=AC ok, output on input_state=AC ok "
        "input_watts=246 model=EX PS800 serial=PS A1 0001 firmware=4.52\n"
        "power_supplies 5: slot=Power supply 2 present=no\n");
    EXPECT_EQ(read("PSU1  Vendor=Example  Watt=1100  In=229V  Out=12.2V  Fan=4320rpm  OK\n"
                   "PSU2  Vendor=Example  Watt=1100  In=0V    Out=0.0V   Fan=0rpm     AC LOST\n"
                   "Redundancy lost; capping at 550 W\n",
                   read_oem_power_supplies)
                  .all(),
              "power_supplies 1: slot=PSU1 present=yes state=OK\n"
              "power_supplies 2: slot=PSU2 present=yes state=AC LOST input_state=AC LOST\n");
    EXPECT_EQ(
        read("PSU1\n"
             "  Present             Yes\n"
             "  Model               EX-PS800\n"
             "  Serial Number       PS0000001\n"
             "  Input               AC 230 V\n"
             "  Output Power        214 W\n"
             "  Status              OK\n"
             "  Weather             fine\n"
             "PSU2\n"
             "  Present             No\n",
             read_oem_power_supplies)
            .all(),
        "power_supplies 1: slot=PSU1 present=yes state=OK input_state=AC 230 V model=EX-PS800 serial=PS0000001\n"
        "power_supplies 9: slot=PSU2 present=no\n"
        "not understood: 1 from 8\n");
    EXPECT_EQ(read("PSU1 : 0 Errors since power on\nPSU2 : not pre", read_oem_power_supplies).all(),
              "power_supplies 1: slot=PSU1 state=0 Errors since power on\n"
              "power_supplies 2: slot=PSU2\n"
              "gap 2: the capture ends in the middle of a line\n");
    EXPECT_EQ(read("Get OEM data: Error 0xc1, Invalid command\n", read_oem_power_supplies).all(),
              "gap 1: no power supply\nerror 1: Get OEM data: Error 0xc1, Invalid command\n");
}

TEST(PowerSupplies, EachStateNamesItsOwnLine) {
    const auto places_of = [](std::string_view text) {
        std::vector<std::int64_t> lines;
        const auto made = read(text, read_oem_power_supplies);
        for (const auto& supply : made.found.power_supplies)
            for (const char* field : {"state", "input_state"})
                lines.push_back(place_of(supply, field).line);
        return lines;
    };
    using Numbers = std::vector<std::int64_t>;
    EXPECT_EQ(places_of("\nPSU1\n  Present             Yes\n  Input               AC lost\n"
                        "  Model               EX-PS800\n  Status              Failed\n"),
              (Numbers{6, 4}));
    EXPECT_EQ(places_of("Power supply 1: present, AC lost, failed\n  Model: EX, firmware 1\n"),
              (Numbers{1, 1}));
}

TEST(JoinPowerSupplies, AStateOfAnotherCaptureStandsThere) {
    Read made;
    made.add("PSU1\n  Present             Yes\n  Status              OK\n", read_oem_power_supplies,
             "psuinfo.txt");
    made.add(
        "PSU1 Input       | 30h | ok  | 10.1 | 0 Watts\n"
        "PSU1 Status      | 33h | ok  | 10.1 | Presence detected, Power Supply AC lost\n",
        read_sdr, "sdrinfo.txt");
    join_bmc(made.found);
    ASSERT_EQ(made.found.power_supplies.size(), 1U);
    const auto& supply = made.found.power_supplies.front();
    EXPECT_EQ(place_of(supply, "state"), (Place{"psuinfo.txt", 3}));
    EXPECT_EQ(place_of(supply, "input_state"), (Place{"sdrinfo.txt", 2}));
    EXPECT_EQ(place_of(supply, "model"), (Place{"psuinfo.txt", 1}));
}

TEST(JoinPowerSupplies, OneOfAllThatIsSaid) {
    Read made;
    made.add(
        "PSU1\n  Present             Yes\n  Serial Number       PS A1 0001\nPSU2\n  Present             Yes\nPSU3\n  Present             No\n",
        read_oem_power_supplies, "psuinfo.txt");
    made.add("BMC Firmware : 2.71\nPSU 1 Firmware : 4.52\nPSU3 Firmware: not present\n",
             read_oem_versions, "verinfo.txt");
    made.add(
        "FRU Device Description : PSU Left FRU (ID 1)\n Product Name          : PSU 800W\n Product Serial        : PS-A1-0001\n\n"
        "FRU Device Description : PSU2 FRU (ID 2)\n Product Name          : PSU 750W\n Product Serial        : PS-A1-0002\n\n",
        read_fru, "fruinfo.txt");
    made.add(
        "Handle 0x0001, DMI type 39, 22 bytes\nSystem Power Supply\n\tLocation: Bay 1\n\tSerial Number: PSA10001\n\tModel Part Number: EX-PS800\n\n"
        "Handle 0x0002, DMI type 39, 22 bytes\nSystem Power Supply\n\tName: Power Supply 4\n\tStatus: Present, OK\n\n",
        read_dmidecode, "dmidecode.log");
    made.add(
        "PSU2 Status      | 34h | ok  | 10.2 | Presence detected, Power Supply AC lost\n"
        "PSU2 Input       | 30h | ok  | 10.2 | 7 Watts\n",
        read_sdr, "sdrinfo.txt");
    join_bmc(made.found);
    made.found.sensors.clear();
    made.found.frus.clear();
    EXPECT_EQ(
        made.entities(),
        "power_supplies 1: slot=PSU1 present=yes serial=PS A1 0001 part=EX-PS800 firmware=4.52\n"
        "power_supplies 4: slot=PSU2 present=yes input_state=Power Supply AC lost input_watts=7 model=PSU 750W serial=PS-A1-0002\n"
        "power_supplies 6: slot=PSU3 present=no\n"
        "power_supplies 7: slot=Power Supply 4 present=yes state=Present, OK\n");
}

TEST(JoinBmc, OneOfAllThatIsSaid) {
    Read made;
    made.add("Firmware Revision : 2.71\nIPMI Version : 2.0\n", read_mc_info, "mcinfo.txt");
    made.add("Selftest: passed\n", read_selftest, "selfinfo.txt");
    made.add("IP Address  - 192.0.2.81\n", read_oem_lan, "laninfo.txt");
    made.add("IP Address  - 192.0.2.99\nMAC Address - 02:00:00:00:80:11\n", read_oem_lan,
             "another.txt");
    join_bmc(made.found);
    EXPECT_EQ(
        made.entities(),
        "bmcs 1: firmware=2.71 ipmi=2.0 self_test=passed address=192.0.2.81 mac=02:00:00:00:80:11\n");
}

TEST(Chassis, States) {
    const auto status = read(
        "System Power         : on\nPower Overload       : false\nDrive Fault          : true\n"
        "Cooling/Fan Fault    : fal",
        read_chassis_status);
    ASSERT_EQ(status.found.chassis_states.size(), 4U);
    EXPECT_EQ(status.found.chassis_states[2].name, "Drive Fault");
    EXPECT_EQ(status.found.chassis_states[2].state, "true");
    EXPECT_FALSE(status.how.whole());
    EXPECT_FALSE(read("System Power         : on\n", read_chassis_status).how.whole());
    EXPECT_TRUE(read("System Power         : on\nCooling/Fan Fault    : false", read_chassis_status)
                    .how.whole());
}

TEST(Oem, LampsAndVersions) {
    const auto leds =
        read("System error LED          amber, on\nIdentify LED              off\n", read_oem_leds);
    ASSERT_EQ(leds.found.leds.size(), 2U);
    EXPECT_EQ(leds.found.leds[0].name, "System error LED");
    EXPECT_EQ(leds.found.leds[0].state, "amber, on");
    EXPECT_EQ(leds.found.leds[1].place.line, 2);
    EXPECT_TRUE(leds.how.whole());
    const auto versions = read(
        "BMC Firmware             : TCO 2.71\nPSU2 Firmware: not present\nUEFI", read_oem_versions);
    ASSERT_EQ(versions.found.component_versions.size(), 2U);
    EXPECT_EQ(versions.found.component_versions[0].version, "TCO 2.71");
    EXPECT_EQ(versions.found.component_versions[1].version, std::nullopt);
    EXPECT_FALSE(versions.how.whole());
}

}  // namespace
}  // namespace qvhost::inventory::test
