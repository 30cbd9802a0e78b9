// Whole log directories: what several captures tell of one thing, and what a tool's refusal means.
#include "inventory/survey.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace qvhost::inventory {
namespace {

namespace fs = std::filesystem;

class SurveyOfCaptures : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "survey-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        dir_ = name;
    }
    void TearDown() override { fs::remove_all(dir_); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(dir_ / name, std::ios::binary) << text;
    }

    Survey survey_all(const std::vector<CaptureOrigin>& origins = {}) {
        events_.clear();
        return survey(dir_, origins, [&](Event&& event) {
            events_.push_back(event.place.capture + ":" + std::to_string(event.place.line));
        });
    }

    fs::path dir_;
    std::vector<std::string> events_;
};

TEST_F(SurveyOfCaptures, ForeignFilesAreNotRead) {
    fs::create_directory(dir_ / "Firmware");
    for (const char* name : {"cpuinfo.log", "sensorinfo.txt", "Firmware/fwtermlog.txt"})
        write(name, "Fan1 | 5000.000 | RPM | ok | na | na | na | na | na | na\n");
    EXPECT_EQ(survey_all().inventory.sensors.size(), 1U);
    const auto found = survey(dir_, {}, [](Event&&) {}, {"sensorinfo.txt", "Firmware"});
    EXPECT_EQ(found.inventory.sensors.size(), 0U);
    EXPECT_EQ(found.find("sensorinfo.txt"), nullptr);
}

const char* const kOfIpmiutil =
    "ipmiutil sel version 3.18\n"
    "SEL Ver 51 Support 0f, Size = 0 records (Used=2, Free=100)\n"
    "RecId Date/Time_______ SEV Src_ Evt_Type___ Sens# Evt_detail - Trig [Evt_data]\n"
    "0001 11/15/26 01:13:41 MIN BMC  Fan #17  Lo Noncrit thresh act=07 thr=08\n"
    "0002 11/15/26 08:14:30 MAJ BMC  Memory #31  Uncorrectable ECC, DIMM(11) 6f [a1 00 0b]\n";
const char* const kOfIpmitool =
    "   1 | 11/15/26 | 01:13:41 UTC | Fan FAN4 | Lower Non-critical going low  | Asserted\n"
    "   2 | 11/15/26 | 08:14:30 UTC | Memory #0x39 | Uncorrectable ECC | Asserted\n";
using Places = std::vector<std::string>;
const Places kByIpmiutil{"selinfo.txt:4", "selinfo.txt:5"};
const Places kByIpmitool{"host_sel.txt:1", "host_sel.txt:2"};

// How the command ended tells it already.
TEST_F(SurveyOfCaptures, TheShellsWordsOnAToolAreNoLineThatNobodyKnows) {
    const std::string missing = "exit code 127: not installed";
    const struct {
        const char* text;
        const char* tool;
        std::string ended_badly;
        std::int64_t not_understood, first;
    } cases[] = {
        {"sh: 1: /opt/qv_tools/storcli_x64: not found\n", "storcli_x64", missing, 0, 0},
        {"/bin/sh: line 1: /opt/storcli_x64: Permission denied", "storcli_x64", "exit code 126", 0,
         0},
        {"storcli_x64: error while loading shared libraries: libx.so.1: cannot open shared object file: No such "
         "file or directory\n",
         "storcli_x64", "exit code 127: a library is missing", 0, 0},
        {"sh: 1: /opt/storcli_x64: Exec format error\nother words\n", "storcli_x64",
         "exit code 126", 1, 2},
        {"sh: 1: /opt/storcli_x64: not found\n", "storcli_x64", "", 1, 1},
        {"sh: 1: other_storcli_x64: not found\n", "storcli_x64", missing, 1, 1},
        {"sh: 1: helper: not found\n", "storcli_x64", missing, 1, 1},
        {"sh: 1: : not found\n", "", missing, 1, 1},
    };
    for (const auto& one : cases) {
        write("c0_showall.txt", one.text);
        const auto found = survey_all({{"c0_showall.txt", one.tool, one.ended_badly}});
        const auto* const capture = found.find("c0_showall.txt");
        ASSERT_NE(capture, nullptr);
        EXPECT_EQ(capture->how.not_understood, one.not_understood) << one.text;
        EXPECT_EQ(capture->how.first_not_understood, one.first) << one.text;
        EXPECT_FALSE(capture->whole()) << one.text;
    }
}

TEST_F(SurveyOfCaptures, AnEventThatTwoCapturesTellIsOne) {
    write("selinfo.txt", kOfIpmiutil);
    write("host_sel.txt", kOfIpmitool);
    const auto both = survey_all();
    EXPECT_EQ(events_, kByIpmiutil);
    EXPECT_TRUE(both.find("selinfo.txt")->whole());
    EXPECT_TRUE(both.find("host_sel.txt")->whole());
    EXPECT_EQ(both.inventory.sel_logs.size(), 1U);
}

TEST_F(SurveyOfCaptures, TheWholeCaptureOfALogIsBelieved) {
    const std::string cut(kOfIpmiutil, 300);
    write("selinfo.txt", cut);
    write("host_sel.txt", kOfIpmitool);
    EXPECT_FALSE(survey_all().find("selinfo.txt")->whole());
    EXPECT_EQ(events_, kByIpmitool);

    // Neither is whole: the longer one tells more.
    write("selinfo.txt", std::string(kOfIpmiutil));
    write("host_sel.txt", "Error: Unable to establish IPMI session\n");
    survey_all({{"selinfo.txt", "ipmiutil", "killed by signal 9"}});
    EXPECT_EQ(events_, kByIpmiutil);
}

TEST_F(SurveyOfCaptures, TheEventLogsOwnCountIsHeld) {
    write("host_sel.txt", kOfIpmitool);
    const std::string info =
        "SEL Information\nVersion          : 1.5\nEntries          : 2\n"
        "Percent Used     : 1%\nOverflow         : false\n";
    write("host_sel_info.txt", info);
    EXPECT_TRUE(survey_all().find("host_sel.txt")->whole());
    write("host_sel_info.txt", std::string(info).replace(info.find(": 2"), 3, ": 3"));
    const auto short_of_one = survey_all();
    EXPECT_FALSE(short_of_one.find("host_sel.txt")->whole());
    EXPECT_EQ(short_of_one.find("host_sel.txt")->how.gaps[0].words, "3 entries announced, 2 read");
}

// Cut off behind a line, a list looks whole; the other one tells that it is not.
TEST_F(SurveyOfCaptures, TheSensorsOfTwoListsAreTheSame) {
    const auto lines = [](const std::string& form, int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += std::string(1, static_cast<char>('A' + i)) + " Temp" + form + "\n";
        return text;
    };
    const std::string sensor =
        "           | 48.000     | degrees C  | ok    | na        | na        | na        | 85.000    "
        "| 90.000    | na        ";
    const std::string sdr = "           | 01h | ok  |  3.1 | 48 degrees C";
    const struct {
        int sensors, records;
        const char* cut_off;  // the capture that is
        const char* words;
    } cases[] = {
        {3, 3, "", ""},
        {3, 2, "sdrinfo.txt", "2 of the 3 sensors that sensorinfo.txt lists"},
        {1, 3, "sensorinfo.txt", "1 of the 3 sensors that sdrinfo.txt lists"},
    };
    for (const auto& one : cases) {
        write("sensorinfo.txt", lines(sensor, one.sensors));
        write("sdrinfo.txt", lines(sdr, one.records));
        const auto found = survey_all();
        for (const char* name : {"sensorinfo.txt", "sdrinfo.txt"}) {
            const auto* const capture = found.find(name);
            ASSERT_NE(capture, nullptr);
            EXPECT_EQ(capture->whole(), std::string(name) != one.cut_off) << name;
            if (!capture->whole()) {
                EXPECT_EQ(capture->how.gaps.front().words, one.words);
            }
        }
    }
    // Other sensors behind the same ones are another list, not a shorter one.
    write("sensorinfo.txt", lines(sensor, 2) + "Z Temp" + sensor + "\n");
    write("sdrinfo.txt", lines(sdr, 5));
    EXPECT_TRUE(survey_all().find("sensorinfo.txt")->whole());
}

TEST_F(SurveyOfCaptures, WhatIsNotThereIsAnAnswerWhereItMayBeNone) {
    const std::string absent =
        "Controller = 0\nStatus = Failure\nDescription = None\n\nDetailed Status :\n"
        "===============\n\n-------------------------------------------------\n"
        "Ctrl Status Property ErrMsg                ErrCd \n"
        "-------------------------------------------------\n"
        "   0 Failed -        Cachevault is absent!    34 \n"
        "-------------------------------------------------\n\n";
    const std::string unsupported =
        "Controller = 0\nStatus = Failure\nDescription = Un-supported command\n\n";
    for (const auto& answer : {absent, unsupported}) {
        write("host_storcli_c0_cv.txt", answer);
        write("c0_showall.txt", answer);
        const auto found = survey_all({{"host_storcli_c0_cv.txt", "storcli", "exit code 46"}});
        EXPECT_TRUE(found.find("host_storcli_c0_cv.txt")->whole());
        EXPECT_FALSE(found.find("c0_showall.txt")->whole());
    }
    const auto killed = survey_all({{"host_storcli_c0_cv.txt", "storcli", "killed by signal 9"}});
    EXPECT_FALSE(killed.find("host_storcli_c0_cv.txt")->whole());
}

std::string fan(int number, const std::string& rest = "") {
    return "Fan" + std::to_string(number) + rest +
           " | 5000.000 | RPM | ok | na | na | na | na | na | na\n";
}

TEST_F(SurveyOfCaptures, OfALongCaptureTheBeginningIsRead) {
    constexpr std::size_t kRead = std::size_t{4} << 20;
    constexpr std::size_t kSensors = 500;
    const auto is_whole = [](const Survey& found) { return found.find("sensorinfo.txt")->whole(); };
    std::string text;
    for (std::size_t number = 1; number <= kSensors; ++number)
        text += fan(static_cast<int>(number));
    text.resize(kRead - 1, ' ');
    text += '\n';
    write("sensorinfo.txt", text);
    EXPECT_TRUE(is_whole(survey_all()));
    write("sensorinfo.txt", text + std::string(300'000, ' ') + '\n' + fan(0));
    auto found = survey_all();
    EXPECT_FALSE(is_whole(found));
    EXPECT_EQ(found.find("sensorinfo.txt")->how.gaps.front().words,
              "it is too long: its first 4224 KiB were read");
    EXPECT_EQ(found.inventory.sensors.size(), kSensors);
    // A log is handed on as it is read.
    std::string log;
    std::size_t lines = 0;
    for (; log.size() < kRead + 300'000; ++lines)
        log += "[1.0] blk_update_request: I/O error, dev sda, sector 7 " + std::string(500, ' ') +
               "\n";
    write("dmesg.log", log);
    found = survey_all();
    EXPECT_TRUE(found.find("dmesg.log")->whole());
    EXPECT_EQ(events_.size(), lines);
}

TEST_F(SurveyOfCaptures, OfACaptureThatListsTooMuchTheBeginningIsRead) {
    std::string text;
    for (int number = 0; number < 4'000; ++number) text += fan(number);
    write("sensorinfo.txt", text);
    write("host_ipmitool_sensor.txt", fan(1));
    EXPECT_TRUE(survey_all().find("sensorinfo.txt")->whole());
    for (int number = 4'000; number < 40'000; ++number) text += fan(number);
    write("sensorinfo.txt", text);
    const auto found = survey_all();
    const auto& capture = *found.find("sensorinfo.txt");
    ASSERT_FALSE(capture.how.gaps.empty());
    EXPECT_TRUE(capture.how.gaps.front().words.starts_with("it is too long: its first 25"))
        << capture.how.gaps.front().words;
    EXPECT_LT(found.inventory.sensors.size(), 8'000U);
    EXPECT_TRUE(found.find("host_ipmitool_sensor.txt")->whole()) << "there is room for others";
}

TEST_F(SurveyOfCaptures, OfManyGapsTheFirstAreKept) {
    std::string text;
    for (int i = 0; i < 10'000; ++i) text += "0001 not an entry\n";
    write("selinfo.txt", text);
    const auto found = survey_all();
    const auto& gaps = found.find("selinfo.txt")->how.gaps;
    EXPECT_EQ(gaps.size(), FirstFew<Gap>::kMost);
    EXPECT_EQ(gaps.front().line, 1);
}

}  // namespace
}  // namespace qvhost::inventory
