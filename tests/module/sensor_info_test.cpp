#include <signal.h>

#include <cerrno>

#include "bench.h"
#include "bmc_notes.h"
#include "rbmcinfo/captures.h"

using namespace marlox::repository;

namespace {

class SensorInfo : public Bench {
protected:
    int ask(const std::string& answer) {
        tool("ipmitool", prints(answer));
        return sensor_info(fakehost::repository());
    }
    std::string records(const std::string& answer) {
        noted();
        EXPECT_EQ(ask(answer), 0);
        return noted({"add"});
    }
};

// The record of one sensor; fields that are not given are empty.
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

const std::string kCommand = "$ ipmitool sensor 1>'L/sensorinfo.txt' 2>&1\n";
const std::string kTold = "4 start to run ipmitool sensor command\n" + kCommand;

TEST_F(SensorInfo, InFull) {
    const std::string notes =
        kTold + R"(
4 Get sensor info successfully
4 se:CPU | 1 | C | ok | a | b | c | d | e | f \nFAN | 2 | R | nc | g | h | i | j | k | l \n
)" + sensor({"CPU ", " 1 ", " C ", " ok ", " a ", " b ", " c ", " d ", " e ", " f "}) +
        sensor({"FAN ", " 2 ", " R ", " nc ", " g ", " h ", " i ", " j ", " k ", " l "});
    for (const unsigned level : {2u, 3u, 4u}) {
        fakehost::min_log_level = level;
        EXPECT_EQ(ask("CPU | 1 | C | ok | a | b | c | d | e | f \n"
                      "FAN | 2 | R | nc | g | h | i | j | k | l \n"),
                  0);
        EXPECT_EQ(noted(), bmc_notes(notes, level));
    }
}

TEST_F(SensorInfo, FieldsAreCountedOverTheWholeText) {
    const auto full = sensor({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"});
    struct Case {
        std::string answer;
        std::string records;
    };
    const Case cases[] = {
        {"1|2|3|4|5|6|7|8|9|10\n", full},
        {"1|2|3|4|5|6|7|8|9|10|11\n", full + sensor({"11"})},
        // What a short line lacks, the next one gives.
        {"1|2|3\n4|5|6|7|8|9|10\n", full},
        // Delimiters in a row count as one.
        {"1||2|3|4|5|6|7|8|9|10\nx\n", full + sensor({"x"})},
        {"|1|2|3|4|5\r\n\n6|7|8|9|10|\r\n", full},
        {"a| |c\n", sensor({"a", " ", "c"})},
        {"no sensors", sensor({"no sensors"})},
        {"", ""},
        {"|\n\r|\n", ""},
        // The text ends at its first NUL.
        {std::string("a|b\0|c\nError sending MS\n", 24), sensor({"a", "b"})},
    };
    for (const auto& [answer, rows] : cases) EXPECT_EQ(records(answer), rows) << answer;
}

// One sensor that could not be read does not discard the others.
TEST_F(SensorInfo, OnlyOneErrorDiscardsTheAnswer) {
    for (const std::string line : {"Bad response", "Error", "Cannot open an IPMI driver",
                                   "Error sending Ms", "error sending MS"})
        EXPECT_EQ(records(line + "\n"), sensor({line}));
    for (const std::string text :
         {"Error sending MS\n", "1|2\nx Error sending MS: y\n", "Bad response\nError sending MS"}) {
        EXPECT_EQ(ask(text), 1);
        EXPECT_EQ(noted(), bmc_notes(kTold + "4 Get sensor info successfully\n4 se:" +
                                     fakehost::escaped(text) + "\n"));
    }
}

TEST_F(SensorInfo, LongAnswersAreKeptWhole) {
    fakehost::min_log_level = 2;
    std::string answer;
    std::string rows;
    for (int i = 0; i < 20'000; ++i) {
        const auto name = "Sensor " + std::to_string(i);
        answer += name + " | 41.000     | degrees C  | ok    | na | na | na | 88.0 | 95.0 | 98.0\n";
        rows += sensor({name + " ", " 41.000     ", " degrees C  ", " ok    ", " na ", " na ",
                        " na ", " 88.0 ", " 95.0 ", " 98.0"});
    }
    EXPECT_EQ(records(answer), rows);
    EXPECT_EQ(ask(answer + "Error sending MS"), 1);
}

TEST_F(SensorInfo, StandardErrorBelongsToTheAnswer) {
    tool("ipmitool", "echo '1|2'; echo '3|4' >&2");
    EXPECT_EQ(sensor_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), sensor({"1", "2", "3", "4"}));
}

TEST_F(SensorInfo, AFailedCommandIsNotRead) {
    tool("ipmitool", "echo '1|2'; exit 1");
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(noted(), bmc_notes(kTold + "3 Failed to get sensor info,exit code:1\n"));
    tool("ipmitool", "echo '1|2'; " + dies_by(SIGSEGV));
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(noted(),
              bmc_notes(kTold + "3 Signal terminal while getting sensor info,exit status:0\n"));
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(noted(), bmc_notes(kTold + "3 Failed to get sensor info\n"));
}

TEST_F(SensorInfo, ACaptureThatCannotBeOpened) {
    tool("ipmitool", "rm -f '" + log_dir + "sensorinfo.txt'");
    EXPECT_EQ(sensor_info(fakehost::repository()), 1);
    EXPECT_EQ(noted(), bmc_notes(kTold + R"(
4 Get sensor info successfully
4 Failed to open sensorinfo log file
)"));
}

}  // namespace
