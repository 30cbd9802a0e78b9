#include "bench.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/items.h"
#include "rbmcinfo/tools.h"

using namespace marlox::repository;

namespace {

class BmcInfo : public Bench {
protected:
    // What the utility answers to `dorvanoem SUB`, and what bmc_info makes of it.
    int ask(int kind, const std::string& answer, int exit_code = 0) {
        vendor_tool("ipmiutil_x64_nh", prints(answer, exit_code));
        tool("ipmitool", prints(answer, exit_code));
        return bmc_info(fakehost::repository(), kind);
    }
    std::string records(int kind, const std::string& answer) {
        EXPECT_EQ(ask(kind, answer), 0);
        return noted({"add"});
    }
};

constexpr const char* k3 = "log 3 qvmodules/rbmcinfo: [repo] ";
constexpr const char* k4 = "log 4 qvmodules/rbmcinfo: [repo] ";

TEST_F(BmcInfo, ControllerAnswerInFull) {
    EXPECT_EQ(ask(1, "Device ID: 32\nFirmware Revision: 1.2\n"), 0);
    EXPECT_EQ(noted(),
              std::string(k4) + "exe ipmiutil dorvanoem mc\n" + k3 +
                  "mc final path:'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1\n"
                  "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1\n" +
                  k4 + "Get MC info successfully\n" + k4 +
                  "se:Device ID: 32\\nFirmware Revision: 1.2\\n\n" + k4 + "From vector:\n" + k4 +
                  "Device ID:  32\n" + k4 +
                  "Firmware Revision:  1.2\n"
                  "add MCINFO \"MC Information\" -1: MC1 \"Device ID\"=\" 32\", "
                  "MC2 \"Firmware Revision\"=\" 1.2\"\n");
    EXPECT_EQ(mc_item_size, 2u);
}

TEST_F(BmcInfo, EachKindHasItsCommandAndItsRecord) {
    struct Case {
        int kind;
        const char* commands;
        const char* record;
    };
    const Case cases[] = {
        {2, "$ ipmitool mc selftest 1>'L/selfinfo.txt' 2>&1\n",
         "add SELFINFO \"QVM Selftest\" -1: self1 \"a\"=\"b\"\n"},
        {3, "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1\n",
         "add VERINFO \"Version Information\" -1: VER1 \"a\"=\"b\"\n"},
        {4, "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem psu 1>'L/psuinfo.txt' 2>&1\n",
         "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"a:b\"\n"},
        {5, "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem lan 1>'L/laninfo.txt' 2>&1\n",
         "add LANINFO \"LAN Information\" -1: LAN1 \"a:b\"=\"\"\n"},
        {6, "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem led 1>'L/ledinfo.txt' 2>&1\n",
         "add LEDINFO \"LEDs Status\" -1: LEDINFO \"LED Detailed Status\"=\"a:b\"\n"},
    };
    for (const auto& [kind, commands, record] : cases) {
        EXPECT_EQ(ask(kind, "a:b\n"), 0);
        const auto all = fakehost::notes;
        EXPECT_EQ(noted({"$"}), commands);
        fakehost::notes = all;
        EXPECT_EQ(noted({"add"}), record);
    }
}

TEST_F(BmcInfo, TheBuildFollowsTheWordSize) {
    vendor_tool("ipmiutil_x32_nh", prints("a:b\n"));
    linux_x32_x64 = 32;
    EXPECT_EQ(bmc_info(fakehost::repository(), 3), 0);
    EXPECT_EQ(noted({"$"}),
              "$ 'P/qv_tools/ipmiutil_x32_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1\n");
    vendor_tool("ipmiutil_x64_nh", prints("a:b\n"));
    linux_x32_x64 = 16;
    EXPECT_EQ(bmc_info(fakehost::repository(), 3), 0);
    EXPECT_EQ(noted({"$"}),
              "$ 'P/qv_tools/ipmiutil_x64_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1\n");
}

TEST_F(BmcInfo, LabelsAndValuesAlternateOverTheWholeText) {
    // A colon in a value shifts all that follows it.
    EXPECT_EQ(records(1, "Time: 14:05\nID: 3\n"),
              "add MCINFO \"MC Information\" -1: MC1 \"Time\"=\" 14\", MC2 \"05\"=\"ID\", "
              "MC3 \" 3\"=\"\"\n");
    // A label without a value takes the next one's label.
    EXPECT_EQ(records(1, "A:\nB: 1\n"),
              "add MCINFO \"MC Information\" -1: MC1 \"A\"=\"B\", MC2 \" 1\"=\"\"\n");
    EXPECT_EQ(records(1, "A: 1\r\nB: 2\r\n"),
              "add MCINFO \"MC Information\" -1: MC1 \"A\"=\" 1\", MC2 \"B\"=\" 2\"\n");
    EXPECT_EQ(records(1, "A: \n"), "add MCINFO \"MC Information\" -1: MC1 \"A\"=\" \"\n");
    EXPECT_EQ(records(5, "MAC - 02:00\nIP - 192.0.2.1\n"),
              "add LANINFO \"LAN Information\" -1: LAN1 \"MAC \"=\" 02:00\", "
              "LAN2 \"IP \"=\" 192.0.2.1\"\n");
}

TEST_F(BmcInfo, SurplusLabelsHaveNoPlace) {
    EXPECT_EQ(records(2, "a:1\nb:2\nc:3\nd:4\n"),
              "add SELFINFO \"QVM Selftest\" -1: self1 \"a\"=\"1\", self2 \"b\"=\"2\"\n");
    EXPECT_EQ(self_item_size, 4u);
}

TEST_F(BmcInfo, AnEmptyAnswerIsARecordWithoutProperties) {
    EXPECT_EQ(records(1, ""), "add MCINFO \"MC Information\" -1:\n");
    EXPECT_EQ(records(5, "\n\n"), "add LANINFO \"LAN Information\" -1:\n");
    EXPECT_EQ(records(4, ""), "");
    EXPECT_EQ(records(6, "\n"), "");
}

TEST_F(BmcInfo, TwoLinesOfASelfTestAreOne) {
    struct Case {
        std::string answer;
        std::string record;
    };
    const Case cases[] = {
        {"Selftest: device error\n -> corrupted\n",
         "self1 \"Selftest\"=\" device error  -> corrupted\""},
        {"Selftest: a\nb\nc\n", "self1 \"Selftest\"=\" a\", self2 \"b\"=\"c\""},
        {"Selftest: passed\n", "self1 \"Selftest\"=\" passed\""},
        // A line end at the very start is not remembered: the second becomes the blank.
        {"\nSelftest: a\n", "self1 \"Selftest\"=\" a \""},
        // Lines behind a NUL count, though their text is gone.
        {std::string("Selftest: a\nb:1\0\n", 17), "self1 \"Selftest\"=\" a b\", self2 \"1\"=\"\""},
    };
    for (const auto& [answer, record] : cases) {
        EXPECT_EQ(records(2, answer), "add SELFINFO \"QVM Selftest\" -1: " + record + "\n")
            << answer;
    }
}

TEST_F(BmcInfo, OnlySelfTestsAreJoined) {
    EXPECT_EQ(records(3, "a:1\nb:2\n"),
              "add VERINFO \"Version Information\" -1: VER1 \"a\"=\"1\", VER2 \"b\"=\"2\"\n");
}

TEST_F(BmcInfo, PowerSuppliesAreARowALine) {
    EXPECT_EQ(records(4, "1\n2\n\n3\r\n4\n5\n"),
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"1\"\n"
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"2\"\n"
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"3\"\n"
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"4\"\n"
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"5\"\n");
    EXPECT_EQ(psu_item_size, 0u);
    ask(6, "one\ntwo\n");
    EXPECT_EQ(noted({"log 4"}), std::string(k4) + "exe ipmiutil dorvanoem led\n" + k4 +
                                    "Get LED info successfully\n" + k4 + "se:one\\ntwo\\n\n" + k4 +
                                    "one\n" + k4 + "two\n");
}

TEST_F(BmcInfo, AnErrorAnywhereDiscardsTheAnswer) {
    for (const char* text :
         {"A: 1\nB: no Error here\n", "Bad response\n", "Cannot open an IPMI driver: x\n"}) {
        for (const int kind : {1, 2, 3, 4, 5, 6}) {
            EXPECT_EQ(ask(kind, text), 1);
            EXPECT_EQ(noted({"add", "log 3 qvmodules/rbmcinfo: [repo] F"}), "") << kind << text;
        }
    }
    EXPECT_EQ(ask(1, "error: lower case is fine\n"), 0);
}

TEST_F(BmcInfo, ATextEndsAtItsFirstNul) {
    EXPECT_EQ(records(1, std::string("A: 1\nB: 2\0Error\n", 16)),
              "add MCINFO \"MC Information\" -1: MC1 \"A\"=\" 1\", MC2 \"B\"=\" 2\"\n");
}

TEST_F(BmcInfo, LongAnswersAreKeptWhole) {
    const std::string value(5000, 'v');
    EXPECT_EQ(records(1, "A:" + value + "\nB:2\n"),
              "add MCINFO \"MC Information\" -1: MC1 \"A\"=\"" + value + "\", MC2 \"B\"=\"2\"\n");
}

TEST_F(BmcInfo, AFailedCommandIsNotRead) {
    EXPECT_EQ(ask(1, "A: 1\n", 3), 1);
    EXPECT_EQ(noted({"add", "log 3 qvmodules/rbmcinfo: [repo] F"}),
              std::string(k3) + "Failed to get MC info,exit code:3\n");
    EXPECT_EQ(ask(2, "A: 1\n", 3), 0);  // a self-test's exit code is its result
    EXPECT_EQ(noted({"add"}), "add SELFINFO \"QVM Selftest\" -1: self1 \"A\"=\" 1\"\n");
}

TEST_F(BmcInfo, ACaptureThatCannotBeOpened) {
    struct Case {
        int kind;
        std::string message;
    };
    const Case cases[] = {
        {1, std::string(k3) + "Failed to open mcinfo log file\n"},
        {2, std::string(k3) + "Failed to open selfinfo log file\n"},
        {3, std::string(k4) + "Failed to open versioninfo log file\n"},
        {4, std::string(k4) + "Failed to open psuinfo log file\n"},
        {5, std::string(k4) + "Failed to open laninfo log file\n"},
        {6, std::string(k4) + "Failed to open ledinfo log file\n"},
    };
    // The tool takes its own capture away.
    vendor_tool("ipmiutil_x64_nh", "rm -f '" + log_dir + "'*.txt");
    tool("ipmitool", "rm -f '" + log_dir + "'*.txt");
    for (const auto& [kind, message] : cases) {
        EXPECT_EQ(bmc_info(fakehost::repository(), kind), 1);
        EXPECT_EQ(noted({std::string(k3) + "Failed", std::string(k4) + "Failed", "add"}), message);
    }
}

TEST_F(BmcInfo, OtherKindsDoNothing) {
    EXPECT_EQ(bmc_info(fakehost::repository(), 0), 1);
    EXPECT_EQ(bmc_info(fakehost::repository(), 7), 1);
    EXPECT_EQ(noted(), "");
}

}  // namespace
