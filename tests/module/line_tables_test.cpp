// Sensors, SDR, FRU and SEL.
#include "bench.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/tools.h"

using namespace marlox::repository;

namespace {

class LineTables : public Bench {
protected:
    void answers(const std::string& text, int exit_code = 0) {
        tool("ipmitool", prints(text, exit_code));
        vendor_tool("ipmiutil_x64_nh", prints(text, exit_code));
    }
};

constexpr const char* k3 = "log 3 qvmodules/rbmcinfo: [repo] ";
constexpr const char* k4 = "log 4 qvmodules/rbmcinfo: [repo] ";

std::string sensor(const std::vector<std::string>& fields) {
    const char* names[] = {"Name", "Reading", "Units", "Status", "LNR",
                           "LC",   "LNC",     "UNC",   "UC",     "UNR"};
    std::string text = "add SENSORINFO \"Sensor Status\" -1:";
    for (std::size_t i = 0; i < 10; ++i) {
        text += (i ? ", item" : " item") + std::to_string(i + 1) + " \"" + names[i] + "\"=\"" +
                (i < fields.size() ? fields[i] : "") + "\"";
    }
    return text + "\n";
}

TEST_F(LineTables, SensorsInFull) {
    answers(
        "CPU | 1 | C | ok | a | b | c | d | e | f \nFAN | 2 | R | nc | g | h | i | j | k | l \n");
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(
        noted(),
        std::string(k4) +
            "start to run ipmitool sensor command\n"
            "$ ipmitool sensor 1>'L/sensorinfo.txt' 2>&1\n" +
            k4 + "Get sensor info successfully\n" + k4 +
            "se:CPU | 1 | C | ok | a | b | c | d | e | f \\nFAN | 2 | R | nc | g | h | i | j | k "
            "| l \\n\n" +
            sensor({"CPU ", " 1 ", " C ", " ok ", " a ", " b ", " c ", " d ", " e ", " f "}) +
            sensor({"FAN ", " 2 ", " R ", " nc ", " g ", " h ", " i ", " j ", " k ", " l "}));
}

TEST_F(LineTables, SensorFieldsAreCountedOverTheWholeText) {
    answers("1|2|3|4|5|6|7|8|9|10|11\n");
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}),
              sensor({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}) + sensor({"11"}));
    answers("1||2|3|4|5|6|7|8|9|10\nx\n");  // delimiters in a row count as one
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}),
              sensor({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}) + sensor({"x"}));
    answers("");
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), "");
}

TEST_F(LineTables, OnlyOneErrorRejectsSensors) {
    answers("Bad response\n");
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), sensor({"Bad response"}));
    answers("1|2\nError sending MS\n");
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(noted({"add"}), "");
    answers("Error\n");
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), sensor({"Error"}));
}

TEST_F(LineTables, SdrIsARowALine) {
    answers("one\n\ntwo\r\nError three\n");
    EXPECT_EQ(sdr_info(fakehost::repository()), 0);
    EXPECT_EQ(noted(),
              std::string("$ ipmitool sdr elist 1>'L/sdrinfo.txt' 2>'L/sdrinfo.txt'\n") + k4 +
                  "Get SDR info successfully\n" + k4 + "se:one\\n\\ntwo\\r\\nError three\\n\n" +
                  k4 +
                  "one \n"
                  "add SDRINFO \"SDR Information\" -1: SDRINFO \"SDR Detailed Info\"=\"one\"\n" +
                  k4 +
                  "two \n"
                  "add SDRINFO \"SDR Information\" -1: SDRINFO \"SDR Detailed Info\"=\"two\"\n" +
                  k4 +
                  "Error three \n"
                  "add SDRINFO \"SDR Information\" -1: "
                  "SDRINFO \"SDR Detailed Info\"=\"Error three\"\n");
    answers("");
    EXPECT_EQ(sdr_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), "");
}

// Two descriptors, two positions: the second stream writes over the first.
TEST_F(LineTables, StandardErrorOverwritesTheStartOfAnSdrList) {
    tool("ipmitool", "printf 'abcdefgh\\n'; printf 'XY' >&2");
    EXPECT_EQ(sdr_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}),
              "add SDRINFO \"SDR Information\" -1: SDRINFO \"SDR Detailed Info\"=\"XYcdefgh\"\n");
}

std::string fru(const std::string& value) {
    return "add FRUINFO \"FRU Information\" -1: FRUINFO \"FRU Detailed Info\"=\"" + value + "\"\n";
}

TEST_F(LineTables, FruLinesKeepTheirEnds) {
    answers("a\n\nb");
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted(), std::string("$ ipmitool fru  1>'L/fruinfo.txt' 2>'L/fruinfo.txt'\n") + k4 +
                           "Get FRU info successfully\n" + k3 + "Oru Debug fru info 4\n" +
                           fru("a\\n") + fru("\\n") + fru("b"));
    std::string forty;
    for (int i = 0; i < 40; ++i) forty += "line\n";
    answers(forty);
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    std::string rows;
    for (int i = 0; i < 40; ++i) rows += fru("line\\n");
    EXPECT_EQ(noted({"add"}), rows);
}

TEST_F(LineTables, LongLinesComeInPieces) {
    answers(std::string(600, 'x') + "\n");
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), fru(std::string(511, 'x')) + fru(std::string(89, 'x') + "\\n"));
    answers(std::string(511, 'x') + "\n");
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), fru(std::string(511, 'x')) + fru("\\n"));
    answers(std::string(510, 'x') + "\n");
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), fru(std::string(510, 'x') + "\\n"));
}

TEST_F(LineTables, WhatStandsBehindANulInALineIsLost) {
    answers(std::string("a\0b\nc\n", 6));
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), fru("a") + fru("c\\n"));
}

TEST_F(LineTables, ExitCode1OfFruIsAccepted) {
    answers("a\n", 1);
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"log", "add"}), std::string(k3) + "Oru Debug fru info 4\n" + fru("a\\n"));
    answers("a\n", 2);
    EXPECT_EQ(fru_info(fakehost::repository()), 1);
    EXPECT_EQ(noted({"log", "add"}), std::string(k3) + "Failed to get FRU info,exit code:2\n");
    answers("a\n", 1);
    EXPECT_EQ(fru_info_amd(fakehost::repository()), 0);
    EXPECT_EQ(sel_info(fakehost::repository()), 1);
}

TEST_F(LineTables, TheFirstFruDeviceAlone) {
    answers("a\n\nb\n");
    EXPECT_EQ(fru_info_amd(fakehost::repository()), 0);
    EXPECT_EQ(noted(), std::string("$ ipmitool fru print 0 1>'L/fruinfo.txt' 2>'L/fruinfo.txt'\n") +
                           k4 + "Get FRU info successfully\n" + k4 + "se:a\\n\\nb\\n\n" + k4 +
                           "a \n" + fru("a") + k4 + "b \n" + fru("b"));
    answers("");
    EXPECT_EQ(fru_info_amd(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), "");
}

TEST_F(LineTables, SelIsARowALine) {
    answers("a\n\nError b\n");
    EXPECT_EQ(sel_info(fakehost::repository()), 0);
    EXPECT_EQ(noted(),
              std::string("$ 'P/qv_tools/ipmiutil_x64_nh' sel -t 1>'L/selinfo.txt' 2>&1\n") + k4 +
                  "Get SEL info successfully\n"
                  "add SELINFO \"SEL Information\" -1: SELINFO \"SEL Info\"=\"a\\n\"\n"
                  "add SELINFO \"SEL Information\" -1: SELINFO \"SEL Info\"=\"\\n\"\n"
                  "add SELINFO \"SEL Information\" -1: SELINFO \"SEL Info\"=\"Error b\\n\"\n");
}

TEST_F(LineTables, CapturesThatCannotBeOpened) {
    tool("ipmitool", "rm -f '" + log_dir + "'*.txt");
    vendor_tool("ipmiutil_x64_nh", "rm -f '" + log_dir + "'*.txt");
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(sdr_info(fakehost::repository()), 1);
    EXPECT_EQ(fru_info(fakehost::repository()), 1);
    EXPECT_EQ(fru_info_amd(fakehost::repository()), 1);
    EXPECT_EQ(sel_info(fakehost::repository()), 1);
    EXPECT_EQ(noted({std::string(k3) + "Failed", std::string(k4) + "Failed"}),
              std::string(k4) + "Failed to open sensorinfo log file\n" + k3 +
                  "Failed to open sdrinfo log file\n" + k3 + "Failed to open fruinfo log file\n" +
                  k3 + "Failed to open fruinfo log file\n" + k4 + "Failed to open SEL log file\n");
}

TEST_F(LineTables, RawCapturesFollowTheWordSizeExactly) {
    for (const auto& [bits, utility] : {std::pair{64, "qv_tools/ipmiutil_x64_nh' "},
                                        std::pair{32, "qv_tools/ipmiutil_x32_nh' "}}) {
        linux_x32_x64 = bits;
        vendor_tool(bits == 64 ? "ipmiutil_x64_nh" : "ipmiutil_x32_nh", prints("raw\n", 3));
        EXPECT_EQ(selhex(), 3 << 8);
        EXPECT_EQ(sen_id(), 3 << 8);
        EXPECT_EQ(noted(), "$ 'P/" + std::string(utility) + "sel -r >'L/SEL_Hex.txt'\n$ 'P/" +
                               utility + "sensor >'L/sensor_with_id_string.txt'\n");
        EXPECT_EQ(log_file("SEL_Hex.txt"), "raw\n");
        EXPECT_EQ(log_file("sensor_with_id_string.txt"), "raw\n");
    }
    linux_x32_x64 = 16;
    EXPECT_NE(selhex(), 0);
    EXPECT_NE(sen_id(), 0);
    EXPECT_EQ(noted(), "$ 'P/L/SEL_Hex.txt'\n$ 'P/L/sensor_with_id_string.txt'\n");
}

}  // namespace
