// Sensors: ipmitool sensor, sdr, sdr elist, ipmiutil sensor, and what they say together.
#include <gtest/gtest.h>

#include <sstream>

#include "beside.h"
#include "inventory/ipmi/join.h"
#include "inventory/ipmi/readers.h"
#include "reading_text.h"

namespace qvhost::inventory::test {
namespace {

constexpr std::string_view kSensors =
    "CPU1 Temp        | 48.000     | degrees C  | ok    | na        | 0.000     | 5.000     | 90.000    | 95.000    | 100.000   \n"
    "CPU2 Temp        | na         |            | na    | na        | na        | na        | 90.000    | 95.000    | 100.000   \n"
    "FAN1             | 480.000    | RPM        | nr    | 480.000   | 720.000   | 960.000   | na        | na        | na        \n"
    "FAN2             | 33.320     | percent    | ok    | na        | na        | na        | na        | na        | na        \n"
    "                 | 12.096     | Volts      | ok    | na        | 10.593    | na        | 13.097    | na        | na        \n"
    "PSU1 Status      | 0x1        | discrete   | 0x0180| na        | na        | na        | na        | na        | na        \n"
    "Chassis Intru    | 0x0        | discrete   | 0x0000| na        | na        | na        | na        | na        | na        \n"
    "Chassis Intru    | na         | discrete   | na    | na        | na        | na        | na        | na        | na        \n"
    "Margin           | -57.500    | degrees C  | ok    | na        | na        | na        | na        | na        | na        \n";

constexpr std::string_view kSensorEntities =
    "sensors 1: name=CPU1 Temp kind=temperature reading=48 unit=degrees C status=ok lc=0 lnc=5 unc=90 uc=95 unr=100\n"
    "sensors 2: name=CPU2 Temp status=na unc=90 uc=95 unr=100\n"
    "sensors 3: name=FAN1 kind=fan reading=480 unit=RPM status=nr lnr=480 lc=720 lnc=960\n"
    "sensors 4: name=FAN2 kind=fan reading=33.32 unit=percent status=ok\n"
    "sensors 5: kind=voltage reading=12.096 unit=Volts status=ok lc=10.593 unc=13.097\n"
    "sensors 6: name=PSU1 Status kind=discrete status=0x0180\n"
    "sensors 7: name=Chassis Intru kind=discrete status=0x0000\n"
    "sensors 8: name=Chassis Intru kind=discrete status=na\n"
    "sensors 9: name=Margin kind=temperature reading=-57.5 unit=degrees C status=ok\n";

// The list of `sdr elist`, without "sensors".
std::string sdr_rows(std::string_view text) {
    const auto made = read(text, read_sdr);
    std::string rows;
    for (const auto& sensor : made.found.sdr_sensors) rows += describe_one(sensor) + "\n";
    return rows + made.all();
}

TEST(Sensor, RowsAreReadByTheirSeparators) {
    EXPECT_EQ(read(kSensors, read_sensors).all(), kSensorEntities);
    EXPECT_EQ(read(with_crlf(kSensors), read_sensors).all(), kSensorEntities);
    auto without_end = kSensors;
    without_end.remove_suffix(1);
    EXPECT_EQ(read(without_end, read_sensors).all(), kSensorEntities);
    EXPECT_TRUE(read(kSensors, read_sensors).how.whole());
}

TEST(Sensor, ChatterIsPassedOverWhereverItStands) {
    const std::string chatter = "IANA PEN registry open failed: No such file or directory";
    std::istringstream lines{std::string(kSensors)};
    std::string glued, apart;
    for (std::string line; std::getline(lines, line);) {
        glued += chatter + line + "\n";
        apart += chatter + "\n" + line + "\n";
    }
    EXPECT_EQ(read(glued, read_sensors).all(), kSensorEntities);
    const auto made = read(apart, read_sensors);
    EXPECT_TRUE(made.how.whole());
    EXPECT_EQ(made.how.not_understood, 0);
    ASSERT_EQ(made.found.sensors.size(), 9U);
    EXPECT_EQ(describe_one(made.found.sensors[2]),
              "6: name=FAN1 kind=fan reading=480 unit=RPM status=nr lnr=480 lc=720 lnc=960");
}

TEST(Sensor, WhatIsNoRowIsSaid) {
    struct Case {
        std::string_view text, all, why;
    };
    for (
        const auto& [text, all, why] : {
            Case{"CPU1 Temp        | 48.000     | degrees C  | o",
                 "gap 1: not a row of ten cells\ngap 1: no sensor\n", "the BMC stopped"},
            Case{
                "CPU1 Temp        | 48.000     | degrees C  | ok    | na        | na        | na        | 90.000    | 95.000    | 10",
                "sensors 1: name=CPU1 Temp kind=temperature reading=48 unit=degrees C status=ok unc=90 uc=95\n"
                "gap 1: the capture ends in the middle of a row\n",
                "100.000 may have been meant"},
            Case{
                "CPU1 Temp        | 44.0CPU2 Temp        | 48.000     | degrees C  | ok    | na        | na        | na        | 90.000    | 95.000    | na        \n",
                "gap 1: not a row of ten cells\ngap 1: no sensor\n", "half a row before a row"},
            Case{
                "A|B              | 48.000     | degrees C  | ok    | na        | na        | na        | 90.000    | 95.000    | na        \n",
                "sensors 1: name=A|B kind=temperature reading=48 unit=degrees C status=ok unc=90 uc=95\n",
                "a separator in a name"},
            Case{
                "CPU1 Temp        | 48.000     | ok         | degrees C | na        | na        | na        | 90.000    | 95.000    | na        \n",
                "gap 1: not a row of ten cells\ngap 1: no sensor\n", "cells in another order"},
            Case{"Error sending MS request: timeout\n",
                 "gap 1: no sensor\nerror 1: Error sending MS request: timeout\n",
                 "the tool's own error"},
            Case{
                "Could not open device at /dev/ipmi0 or /dev/ipmi/0 or /dev/ipmidev/0: No such file or directory\n",
                "gap 1: no sensor\nerror 1: Could not open device at /dev/ipmi0 or /dev/ipmi/0 or /dev/ipmidev/0: "
                "No such file or directory\n",
                "no driver"},
            Case{
                "Error reading event status for sensor #05: Node busyCPU1 Temp        | 48.000     | degrees C  | ok    | na        | na        | na        | na        | na        | na        \n",
                "gap 1: not a row of ten cells\ngap 1: no sensor\n", "an error before a row"},
            Case{"hello\n", "gap 1: no sensor\nnot understood: 1 from 1\n", "nobody knows it"},
            Case{"\n", "gap 1: no sensor\n", "an empty line"},
            Case{"", "", "an empty capture, which is not whole either"},
        }) {
        EXPECT_EQ(read(text, read_sensors).all(), all) << why;
    }
    EXPECT_FALSE(read("", read_sensors).how.whole());
}

TEST(Sdr, ElistHasNumbersAndStates) {
    const std::string text =
        "CPU1 Temp        | 01h | ok  |  3.1 | 48 degrees C\n"
        "VBAT             | 27h | lcr | 40.1 | 2.69 Volts\n"
        "PSU2 Temp        | 09h | ns  | 10.2 | Disabled\n"
        "FAN3             | 1Eh | ns  | 29.3 | No Reading\n"
        "PSU2 Status      | 34h | ok  | 10.2 | Presence detected, Power Supply AC lost\n"
        "PSU3 Status      | 35h | ok  | 10.3 | AC out-of-range, but present, Presence detected\n"
        "Memory ECC       | 39h | ok  |  8.15 | \n";
    const std::string rows =
        "1: name=CPU1 Temp number=01h kind=temperature reading=48 unit=degrees C status=ok\n"
        "2: name=VBAT number=27h kind=voltage reading=2.69 unit=Volts status=lcr\n"
        "3: name=PSU2 Temp number=09h status=ns\n"
        "4: name=FAN3 number=1Eh status=ns\n"
        "5: name=PSU2 Status number=34h kind=discrete status=ok states=[Presence detected][Power Supply AC lost]\n"
        "6: name=PSU3 Status number=35h kind=discrete status=ok states=[AC out-of-range, but present][Presence detected]\n"
        "7: name=Memory ECC number=39h kind=discrete status=ok\n";
    EXPECT_EQ(sdr_rows(text), rows);
    EXPECT_EQ(sdr_rows(with_crlf(text)), rows);
}

TEST(Sdr, OlderFormsAreReadToo) {
    EXPECT_EQ(sdr_rows("Fan 1            | 33.32 percent     | ok\n"
                       "Temp 18          | disabled          | ns\n"
                       "UID Light        | 0x00              | ok\n"),
              "1: name=Fan 1 kind=fan reading=33.32 unit=percent status=ok\n"
              "2: name=Temp 18 status=ns\n"
              "3: name=UID Light kind=discrete status=ok\n");
    EXPECT_EQ(
        sdr_rows(
            "HDD1,46h,ok,26.1,Drive Fault, In Critical Array\nHDD10,4Fh,ns,26.10,No Reading\n"),
        "1: name=HDD1 number=46h kind=discrete status=ok states=[Drive Fault][In Critical Array]\n"
        "2: name=HDD10 number=4Fh status=ns\n");
}

// The shell, or the tool on standard error, writes over the beginning of the answer.
TEST(Sdr, WhatIsLeftOfAnOverwrittenRowIsNoSensor) {
    const std::string answer =
        "CPU1 Temp        | 04h | ok  |  3.1 | 30 degrees C\n"
        "CPU2 Temp        | 05h | ok  |  3.2 | 31 degrees C\n"
        "FAN1             | 07h | ok  | 29.1 | 9960 RPM\n";
    const std::string fan = "name=FAN1 number=07h kind=fan reading=9960 unit=RPM status=ok\n";
    const struct {
        std::string message;
        std::size_t sensors;
    } cases[] = {
        {"Killed\n", 2},
        {"Segmentation fault\n", 2},
        {"IANA PEN registry open failed: No such file or directory\n", 1},
    };
    for (const auto& [message, sensors] : cases) {
        const auto left = message + answer.substr(message.size());
        EXPECT_EQ(read(left, read_sdr).found.sdr_sensors.size(), sensors) << left;
        EXPECT_NE(sdr_rows(left).find(fan), std::string::npos) << left;
        EXPECT_NE(sdr_rows(left).find("gap 2: "), std::string::npos) << left;
        // A message that goes before the answer leaves it whole.
        const auto whole = read(message + answer, read_sdr);
        EXPECT_EQ(whole.found.sdr_sensors.size(), 3U) << whole.all();
        EXPECT_TRUE(whole.how.gaps.empty()) << whole.all();
    }
}

TEST(Sdr, WhatIsNoRowIsSaid) {
    struct Case {
        std::string_view text, all, why;
    };
    for (
        const auto& [text, all, why] : {
            Case{"PSU2 Status      | 34h | ok  | 10.2 | Presence detected, Power Supply AC lo",
                 "gap 1: the capture ends in the middle of a row\ngap 1: no sensor\n",
                 "no state is called so"},
            Case{"CPU1 Temp        | 01h | ok  |  3.1 | 48 deg",
                 "gap 1: the capture ends in the middle of a row\ngap 1: no sensor\n",
                 "no unit is called so"},
            Case{
                "CPU1 Temp        | 01h | ok  |  3.1 | 48 degrees C",
                "1: name=CPU1 Temp number=01h kind=temperature reading=48 unit=degrees C status=ok\n",
                "only the line's end is missing"},
            Case{"CPU1 Temp        | 01h | o\n",
                 "gap 1: not a row of an SDR list\ngap 1: no sensor\n", "cut off"},
            Case{"Get SDR 0012 command failed: Reservation cancelled\n",
                 "gap 1: no sensor\nerror 1: Get SDR 0012 command failed: Reservation cancelled\n",
                 "an error"},
        }) {
        EXPECT_EQ(sdr_rows(text), all) << why;
    }
}

TEST(IpmiutilSensor, GivesNumbersAndKinds) {
    const std::string text =
        "ipmiutil sensor version 3.18\n"
        "-- BMC version 2.71, IPMI version 2.0 \n"
        "_ID_ SDR_Type_xx ET Own Typ S_Num   Sens_Description   Hex & Interp Reading\n"
        "0001 SDR IPMB 12 0e dev: 20 00 8f 06 01 BMC\n"
        "0003 SDR Full 01 01 20 a 01 snum 0a CPU1 Temp        = 30 OK   48.00 degrees C\n"
        "001c SDR Full 01 01 20 a 04 snum 1c FAN1             = 00 Init\n"
        "002e SDR Comp 02 6f 20 m 08 snum 2c PSU2 Status      = 0009 AC_Lost  \n"
        "0046 SDR FRU  11 15 dev: 20 05 80 00 0b 05 Riser2 FRU\n"
        "ipmiutil sensor, completed successfully\n";
    const auto made = read(text, read_ipmiutil_sensors);
    std::string rows;
    for (const auto& sensor : made.found.ipmiutil_sensors) rows += describe_one(sensor) + "\n";
    EXPECT_EQ(rows + made.all(),
              "5: name=CPU1 Temp number=0Ah kind=temperature\n"
              "6: name=FAN1 number=1Ch kind=fan\n"
              "7: name=PSU2 Status number=2Ch kind=discrete\n");
    EXPECT_FALSE(read(text.substr(0, text.size() - 41), read_ipmiutil_sensors).how.whole());
}

TEST(JoinSensors, OneSensorAThing) {
    Read made;
    made.add(
        "Temp             | 48.000     | degrees C  | nc    | na        | na        | na        | 45.000    | na        | na        \n"
        "Temp             | na         |            | na    | na        | na        | na        | 45.000    | na        | na        \n"
        "PSU2 Status      | 0x9        | discrete   | 0x0980| na        | na        | na        | na        | na        | na        \n"
        "FAN7             | na         |            | na    | na        | na        | na        | na        | na        | na        \n",
        read_sensors, "sensorinfo.txt");
    made.add(
        "Temp             | 49.000     | degrees C  | cr    | na        | na        | na        | 45.000    | na        | na        \n",
        read_sensors, "host_ipmitool_sensor.txt");
    made.add(
        "Temp             | 01h | unc |  3.1 | 48 degrees C\n"
        "Temp             | 02h | ucr |  3.2 | 51 degrees C\n"
        "PSU2 Status      | 34h | ok  | 10.2 | Presence detected, Power Supply AC lost\n"
        "FAN7             | 22h | ns  | 29.7 | Disabled\n"
        "Only Here        | 40h | ok  | 29.8 | 100 RPM\n",
        read_sdr, "sdrinfo.txt");
    made.add(
        "0003 SDR Full 01 01 20 a 01 snum 01 Temp             = 30 OK   48.00 degrees C\n"
        "001c SDR Full 01 01 20 a 04 snum 22 FAN7             = 00 Init\n"
        "001d SDR Full 01 01 20 a 04 snum 23 FAN8             = 00 Init\n",
        read_ipmiutil_sensors, "sensor_with_id_string.txt");
    join_bmc(made.found);
    EXPECT_EQ(
        made.entities(),
        "sensors 1: name=Temp number=01h kind=temperature reading=48 unit=degrees C status=nc unc=45\n"
        "sensors 2: name=Temp number=02h kind=temperature reading=51 unit=degrees C status=ucr unc=45\n"
        "sensors 3: name=PSU2 Status number=34h kind=discrete status=ok states=[Presence detected][Power Supply AC lost]\n"
        "sensors 4: name=FAN7 number=22h kind=fan status=na\n"
        "sensors 5: name=Only Here number=40h kind=fan reading=100 unit=RPM status=ok\n");
    const auto* const fan = &made.found.sensors[3];
    EXPECT_EQ(sensor_of_event(made.found, "FAN7"), fan);
    EXPECT_EQ(sensor_of_event(made.found, "Fan #22"), fan);
    EXPECT_EQ(sensor_of_event(made.found, "Fan #0x22"), fan);
    EXPECT_EQ(sensor_of_event(made.found, "Temp"), nullptr);  // there are two
    EXPECT_EQ(sensor_of_event(made.found, "Fan #ff"), nullptr);
    EXPECT_TRUE(made.found.sdr_sensors.empty());
    EXPECT_TRUE(made.found.ipmiutil_sensors.empty());
}

// Nothing but the cells between the separators, for rows of ten.
std::string naive_cell(const std::string& line, int index) {
    std::istringstream cells(line);
    std::string cell;
    for (int i = 0; i <= index; ++i) std::getline(cells, cell, '|');
    cell.erase(0, cell.find_first_not_of(' '));
    cell.erase(cell.find_last_not_of(" \r") + 1);
    return cell;
}

TEST(Sensor, CapturesAreReadAsANaiveReaderReadsThem) {
    auto files = files_in(folder_beside("captures/ipmitool"), "sensor-");
    for (auto& file : files_in(folder_beside("ipmi_sim/samples"), "ipmitool_sensor"))
        files.push_back(file);
    for (auto& file : files_in(folder_beside("ipmi_sim/samples"), "fault_busy_every10_sensor"))
        files.push_back(file);
    if (files.empty()) GTEST_SKIP() << "no captures beside the repository";
    std::size_t rows = 0;
    for (const auto& file : files) {
        const auto text = content(file);
        const auto made = read(text, read_sensors);
        std::istringstream lines(text);
        std::int64_t number = 0;
        std::size_t index = 0;
        for (std::string line; std::getline(lines, line);) {
            ++number;
            if (std::count(line.begin(), line.end(), '|') != 9) continue;
            ASSERT_LT(index, made.found.sensors.size()) << file << ":" << number;
            const auto& sensor = made.found.sensors[index++];
            EXPECT_EQ(sensor.place.line, number);
            EXPECT_EQ(sensor.name.value_or(""), naive_cell(line, 0));
            EXPECT_EQ(sensor.status.value_or(""), naive_cell(line, 3)) << file << ":" << number;
            const auto value = [&](int cell) {
                return std::strtod(naive_cell(line, cell).c_str(), nullptr);
            };
            const bool is_number = naive_cell(line, 2) != "discrete" && naive_cell(line, 1) != "na";
            EXPECT_EQ(sensor.reading.has_value(), is_number) << file << ":" << number;
            if (is_number) {
                EXPECT_DOUBLE_EQ(*sensor.reading, value(1));
            }
            const Real thresholds[] = {sensor.lnr, sensor.lc, sensor.lnc,
                                       sensor.unc, sensor.uc, sensor.unr};
            for (int i = 0; i < 6; ++i) {
                EXPECT_EQ(thresholds[i].has_value(), naive_cell(line, 4 + i) != "na")
                    << file << ":" << number;
                if (thresholds[i]) {
                    EXPECT_DOUBLE_EQ(*thresholds[i], value(4 + i));
                }
            }
            ++rows;
        }
        EXPECT_EQ(index, made.found.sensors.size()) << file;
    }
    EXPECT_GT(rows, 300U);
}

}  // namespace
}  // namespace qvhost::inventory::test
