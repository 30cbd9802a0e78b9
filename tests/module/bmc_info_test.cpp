#include <signal.h>

#include <cerrno>

#include "bench.h"
#include "bmc_notes.h"
#include "rbmcinfo/captures.h"
#include "rbmcinfo/items.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class BmcInfo : public Bench {
protected:
    void answers(const std::string& script) {
        vendor_tool("ipmiutil_x64_nh", script);
        tool("ipmitool", script);
    }
    // What bmc_info makes of an answer.
    int ask(int kind, const std::string& answer, int exit_code = 0) {
        answers(prints(answer, exit_code));
        return bmc_info(fakehost::repository(), kind);
    }
    std::string records(int kind, const std::string& answer) {
        noted();
        EXPECT_EQ(ask(kind, answer), 0);
        return noted({"add"});
    }
};

struct Kind {
    int number;
    std::string file;
    std::string label;
    std::string command;
    std::string told;  // before the command runs
    unsigned not_opened_level;
};

const std::string kMcCommand = "'P/qv_tools/ipmiutil_x64_nh' dorvanoem mc 1>'L/mcinfo.txt' 2>&1";

const Kind kKinds[] = {
    {1, "mcinfo", "MC", kMcCommand,
     "4 exe ipmiutil dorvanoem mc\n3 mc final path:" + kMcCommand + "\n", 3},
    {2, "selfinfo", "selftest", "ipmitool mc selftest 1>'L/selfinfo.txt' 2>&1",
     "4 exe ipmitool mc selftest\n", 3},
    {3, "versioninfo", "version",
     "'P/qv_tools/ipmiutil_x64_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1",
     "4 exe ipmiutil dorvanoem ver\n", 4},
    {4, "psuinfo", "PSU", "'P/qv_tools/ipmiutil_x64_nh' dorvanoem psu 1>'L/psuinfo.txt' 2>&1",
     "4 exe ipmiutil dorvanoem psu\n", 4},
    {5, "laninfo", "LAN", "'P/qv_tools/ipmiutil_x64_nh' dorvanoem lan 1>'L/laninfo.txt' 2>&1",
     "4 exe ipmiutil dorvanoem lan\n", 4},
    {6, "ledinfo", "LED", "'P/qv_tools/ipmiutil_x64_nh' dorvanoem led 1>'L/ledinfo.txt' 2>&1",
     "4 exe ipmiutil dorvanoem led\n", 4},
};

TEST_F(BmcInfo, AnswersInFull) {
    const std::string parsed[] = {
        R"(
4 From vector:
4 a: 1
4 b-2: c
add MCINFO "MC Information" -1: MC1 "a"="1", MC2 "b-2"="c"
)",
        R"(
4 From vector:
4 a: 1 b-2
4 c: 
add SELFINFO "QVM Selftest" -1: self1 "a"="1 b-2", self2 "c"=""
)",
        R"(
4 From vector:
4 a: 1
4 b-2: c
add VERINFO "Version Information" -1: VER1 "a"="1", VER2 "b-2"="c"
)",
        R"(
4 a:1
add PSUINFO "PSU Information" -1: PSUINFO "PSU Detailed Info"="a:1"
4 b-2:c
add PSUINFO "PSU Information" -1: PSUINFO "PSU Detailed Info"="b-2:c"
)",
        R"(
4 From vector:
4 a:1: b
4 2:c: 
add LANINFO "LAN Information" -1: LAN1 "a:1"="b", LAN2 "2:c"=""
)",
        R"(
4 a:1
add LEDINFO "LEDs Status" -1: LEDINFO "LED Detailed Status"="a:1"
4 b-2:c
add LEDINFO "LEDs Status" -1: LEDINFO "LED Detailed Status"="b-2:c"
)"};
    for (const auto& kind : kKinds) {
        // A self-test's two lines are one answer.
        const char* text = kind.number == 2 ? "4 se:a:1 b-2:c\\n\n" : "4 se:a:1\\nb-2:c\\n\n";
        const auto notes = kind.told + "$ " + kind.command + "\n4 Get " + kind.label +
                           " info successfully\n" + text + parsed[kind.number - 1];
        for (const unsigned level : {2u, 3u, 4u}) {
            fakehost::min_log_level = level;
            EXPECT_EQ(ask(kind.number, "a:1\nb-2:c\n"), 0);
            EXPECT_EQ(noted(), bmc_notes(notes, level));
        }
    }
}

TEST_F(BmcInfo, ValuesKeepTheirBlanks) {
    EXPECT_EQ(records(1, "Device ID: 32\nFirmware Revision: 1.2\n"),
              "add MCINFO \"MC Information\" -1: MC1 \"Device ID\"=\" 32\", "
              "MC2 \"Firmware Revision\"=\" 1.2\"\n");
}

TEST_F(BmcInfo, TheBuildFollowsTheWordSize) {
    vendor_tool("ipmiutil_x32_nh", prints("a:b\n"));
    vendor_tool("ipmiutil_x64_nh", prints("a:b\n"));
    for (const auto& [bits, build] : {std::pair{32, "x32"}, {64, "x64"}, {16, "x64"}, {0, "x64"}}) {
        linux_x32_x64 = bits;
        EXPECT_EQ(bmc_info(fakehost::repository(), 3), 0);
        EXPECT_EQ(noted({"$"}), std::string("$ 'P/qv_tools/ipmiutil_") + build +
                                    "_nh' dorvanoem ver 1>'L/verinfo.txt' 2>&1\n");
    }
}

TEST_F(BmcInfo, LabelsAndValuesAlternateOverTheWholeText) {
    struct Case {
        int kind;
        std::string answer;
        std::string properties;
    };
    const Case cases[] = {
        // A colon in a value shifts all that follows it.
        {1, "Time: 14:05\nID: 3\n", R"(MC1 "Time"=" 14", MC2 "05"="ID", MC3 " 3"="")"},
        // A label without a value takes the next one's label.
        {1, "A:\nB: 1\n", R"(MC1 "A"="B", MC2 " 1"="")"},
        {1, "A: 1\r\nB: 2\r\n", R"(MC1 "A"=" 1", MC2 "B"=" 2")"},
        {1, "A: \n", R"(MC1 "A"=" ")"},  // a blank alone is a value
        {1, "A::1\n\n\nB:2", R"(MC1 "A"="1", MC2 "B"="2")"},
        {1, ":::A", R"(MC1 "A"="")"},
        {1, "A\t:\x1b[1m\n", R"(MC1 "A\t"="\x1b[1m")"},
        {1, "n\xc3\xb6:\xff\xfe\n", "MC1 \"n\xc3\xb6\"=\"\xff\xfe\""},
        {3, "A-B: 1-2\n", R"(VER1 "A-B"=" 1-2")"},
        {5, "MAC - 02:00\nIP - 192.0.2.1\n", R"(LAN1 "MAC "=" 02:00", LAN2 "IP "=" 192.0.2.1")"},
        {5, "Host name - a-b\n", R"(LAN1 "Host name "=" a", LAN2 "b"="")"},
    };
    const std::map<int, std::string> heads = {{1, "add MCINFO \"MC Information\" -1: "},
                                              {3, "add VERINFO \"Version Information\" -1: "},
                                              {5, "add LANINFO \"LAN Information\" -1: "}};
    for (const auto& [kind, answer, properties] : cases)
        EXPECT_EQ(records(kind, answer), heads.at(kind) + properties + "\n") << answer;
}

TEST_F(BmcInfo, SurplusLabelsHaveNoPlace) {
    struct Case {
        int kind;
        const char* separator;
        unsigned places;
        std::string id;
        std::string head;
        const unsigned& count;
    };
    const Case cases[] = {
        {1, ":", 12, "MC", "add MCINFO \"MC Information\" -1:", mc_item_size},
        {2, ":", 2, "self", "add SELFINFO \"QVM Selftest\" -1:", self_item_size},
        {3, ":", 16, "VER", "add VERINFO \"Version Information\" -1:", ver_item_size},
        {5, "-", 12, "LAN", "add LANINFO \"LAN Information\" -1:", lan_item_size},
    };
    for (const auto& c : cases) {
        std::string answer;
        std::string record = c.head;
        std::string pairs;
        for (unsigned i = 1; i <= c.places + 2; ++i) {
            const auto number = std::to_string(i);
            answer += "l" + number + c.separator + "v" + number + "\n";
            pairs += "4 l" + number + ": v" + number + "\n";
            if (i > c.places) continue;
            record +=
                (i > 1 ? ", " : " ") + c.id + number + " \"l" + number + "\"=\"v" + number + "\"";
        }
        ask(c.kind, answer);
        const auto all = noted();
        const auto expected = bmc_notes("4 From vector:\n" + pairs + record + "\n");
        EXPECT_TRUE(all.ends_with(expected)) << all;
        EXPECT_EQ(c.count, c.places + 2);
    }
}

TEST_F(BmcInfo, CountsStayThoseOfTheLastAnswerThatWasStored) {
    ask(1, "a:1\nb:2\n");
    EXPECT_EQ(mc_item_size, 2u);
    EXPECT_EQ(ask(1, "a:Error\n"), 1);
    EXPECT_EQ(ask(1, "a:1\n", 3), 1);
    EXPECT_EQ(mc_item_size, 2u);
    ask(4, "a:1\nb:2\n");
    ask(6, "a:1\nb:2\n");
    EXPECT_EQ(psu_item_size, 0u);
    EXPECT_EQ(led_item_size, 0u);
    EXPECT_EQ(self_item_size + ver_item_size + lan_item_size, 0u);
}

TEST_F(BmcInfo, AnEmptyAnswerIsARecordWithoutProperties) {
    EXPECT_EQ(records(1, ""), "add MCINFO \"MC Information\" -1:\n");
    EXPECT_EQ(records(2, "\n"), "add SELFINFO \"QVM Selftest\" -1:\n");
    EXPECT_EQ(records(3, ":\n:\r\n"), "add VERINFO \"Version Information\" -1:\n");
    EXPECT_EQ(records(5, "\n\n"), "add LANINFO \"LAN Information\" -1:\n");
    EXPECT_EQ(records(4, ""), "");
    EXPECT_EQ(records(6, "\n"), "");
}

TEST_F(BmcInfo, TwoLinesOfASelfTestAreOne) {
    struct Case {
        std::string answer;
        std::string properties;
    };
    const Case cases[] = {
        {"Selftest: passed\n", R"(self1 "Selftest"=" passed")"},
        {"Selftest: device error\n -> corrupted\n",
         R"(self1 "Selftest"=" device error  -> corrupted")"},
        {"Selftest: a\nb\nc\n", R"(self1 "Selftest"=" a", self2 "b"="c")"},
        {"Selftest: a\nb", R"(self1 "Selftest"=" a", self2 "b"="")"},  // line ends count
        {"Selftest: a\r\nb\r\n", R"(self1 "Selftest"=" a", self2 " b"="")"},
        // A line end at the very start is not remembered: the second becomes the blank.
        {"\nSelftest: a\n", R"(self1 "Selftest"=" a ")"},
        {"\n\n", R"(self1 " "="")"},
        // Lines behind a NUL count, though their text is gone.
        {std::string("Selftest: a\nb:1\0\n", 17), R"(self1 "Selftest"=" a b", self2 "1"="")"},
        {std::string("Selftest: a\nb:1\0\n\n", 18), R"(self1 "Selftest"=" a", self2 "b"="1")"},
        // The shell's answer where there is no ipmitool.
        {"sh: 1: ipmitool: not found\n", R"(self1 "sh"=" 1", self2 " ipmitool"=" not found")"},
    };
    for (const auto& [answer, properties] : cases) {
        EXPECT_EQ(records(2, answer), "add SELFINFO \"QVM Selftest\" -1: " + properties + "\n")
            << answer;
    }
}

TEST_F(BmcInfo, OnlySelfTestsAreJoined) {
    EXPECT_EQ(records(3, "a:1\nb:2\n"),
              "add VERINFO \"Version Information\" -1: VER1 \"a\"=\"1\", VER2 \"b\"=\"2\"\n");
}

TEST_F(BmcInfo, PowerSuppliesAndLedsAreARowALine) {
    const std::string answer = "1\n 2: x \n\n3\r\n4|\n5";
    std::string psu;
    std::string led;
    for (const char* line : {"1", " 2: x ", "3", "4|", "5"}) {
        const auto value = "=\"" + std::string(line) + "\"\n";
        psu += "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"" + value;
        led += "add LEDINFO \"LEDs Status\" -1: LEDINFO \"LED Detailed Status\"" + value;
    }
    EXPECT_EQ(records(4, answer), psu);
    EXPECT_EQ(records(6, answer), led);
}

TEST_F(BmcInfo, AnErrorAnywhereDiscardsTheAnswer) {
    for (const std::string text :
         {"A: 1\nB: no Error here\n", "A: 1\nBad response\n", "Cannot open an IPMI driver: x\n"}) {
        for (const auto& kind : kKinds) {
            EXPECT_EQ(ask(kind.number, text), 1);
            std::string se = fakehost::escaped(text);
            if (kind.number == 2 && text.starts_with('A')) se.replace(se.find("\\n"), 2, " ");
            EXPECT_EQ(noted(), bmc_notes(kind.told + "$ " + kind.command + "\n4 Get " + kind.label +
                                         " info successfully\n4 se:" + se + "\n"));
        }
    }
    for (const char* text : {"error\n", "bad response\n", "Cannot open an ipmi driver\n"}) {
        EXPECT_EQ(ask(1, text), 0);
        EXPECT_NE(noted({"add"}), "") << text;
    }
}

TEST_F(BmcInfo, ATextEndsAtItsFirstNul) {
    EXPECT_EQ(ask(1, std::string("A: 1\nB: 2\0Error\n", 16)), 0);
    EXPECT_EQ(noted({"log 4 qvmodules/rbmcinfo: [repo] se:", "add"}), bmc_notes(R"(
4 se:A: 1\nB: 2
add MCINFO "MC Information" -1: MC1 "A"=" 1", MC2 "B"=" 2"
)"));
    EXPECT_EQ(records(4, std::string("one\ntwo\0\nthree\n", 15)),
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"one\"\n"
              "add PSUINFO \"PSU Information\" -1: PSUINFO \"PSU Detailed Info\"=\"two\"\n");
}

TEST_F(BmcInfo, LongAnswersAreKeptWhole) {
    fakehost::min_log_level = 2;
    for (const std::size_t size : {1022u, 1023u, 1024u, 65534u, 65536u, 4'000'000u}) {
        const std::string value(size, 'v');
        EXPECT_EQ(
            records(1, "A:" + value + "\nB:2\n"),
            "add MCINFO \"MC Information\" -1: MC1 \"A\"=\"" + value + "\", MC2 \"B\"=\"2\"\n");
        EXPECT_EQ(ask(1, value + "Error"), 1);
    }
}

TEST_F(BmcInfo, StandardErrorBelongsToTheAnswer) {
    answers("echo 'a: 1'; echo 'b- 2' >&2; echo 'c: 3'");
    for (const auto& kind : kKinds) {
        EXPECT_EQ(bmc_info(fakehost::repository(), kind.number), 0);
        const auto text = noted({"log 4 qvmodules/rbmcinfo: [repo] se:"});
        EXPECT_EQ(text, bmc_notes("4 se:a: 1\\nb- 2\\nc: 3\\n\n")) << kind.number;
    }
}

TEST_F(BmcInfo, AFailedCommandIsNotRead) {
    struct Case {
        std::string script;
        int spawn_error;
        std::string message;  // up to the label
        std::string behind;
    };
    const Case cases[] = {
        {"echo a:1; exit 3", 0, "3 Failed to get ", " info,exit code:3\n"},
        {"echo a:1; exit 137", 0, "3 Failed to get ", " info,exit code:137\n"},
        {"echo a:1; " + dies_by(SIGKILL), 0, "3 Signal terminal while getting ",
         " info,exit status:0\n"},
        {"echo a:1", EAGAIN, "3 Failed to get ", " info\n"},
    };
    for (const auto& [script, error, message, behind] : cases) {
        answers(script);
        fake_system.spawn_error = [error = error](std::string_view) { return error; };
        for (const auto& kind : kKinds) {
            if (kind.number == 2 && message + behind != "3 Failed to get  info\n" &&
                message.starts_with("3 Failed"))
                continue;
            EXPECT_EQ(bmc_info(fakehost::repository(), kind.number), 1);
            EXPECT_EQ(noted(), bmc_notes(kind.told + "$ " + kind.command + "\n" + message +
                                         kind.label + behind));
        }
    }
}

// A self-test tells its result by its exit code.
TEST_F(BmcInfo, EveryExitCodeOfASelfTestIsRead) {
    for (const int code : {1, 3, 127, 137, 255}) {
        EXPECT_EQ(ask(2, "a:1\n", code), 0);
        EXPECT_EQ(noted(), bmc_notes(R"(
4 exe ipmitool mc selftest
$ ipmitool mc selftest 1>'L/selfinfo.txt' 2>&1
4 se:a:1\n
4 From vector:
4 a: 1
add SELFINFO "QVM Selftest" -1: self1 "a"="1"
)"));
    }
}

TEST_F(BmcInfo, ACaptureThatCannotBeOpened) {
    // The tool takes its own capture away.
    answers("rm -f '" + log_dir + "'*.txt");
    for (const auto& kind : kKinds) {
        EXPECT_EQ(bmc_info(fakehost::repository(), kind.number), 1);
        EXPECT_EQ(noted(),
                  bmc_notes(kind.told + "$ " + kind.command + "\n4 Get " + kind.label +
                            " info successfully\n" + std::to_string(kind.not_opened_level) +
                            " Failed to open " + kind.file + " log file\n"));
    }
}

TEST_F(BmcInfo, NoLogDirectory) {
    answers("echo a:1");
    std::filesystem::remove(log_dir);
    EXPECT_EQ(bmc_info(fakehost::repository(), 1), 1);
    EXPECT_EQ(bmc_info(fakehost::repository(), 2), 1);
    EXPECT_EQ(noted({"log 3", "add"}), bmc_notes("3 mc final path:" + kMcCommand + R"(
3 Failed to get MC info,exit code:2
3 Failed to open selfinfo log file
)"));
}

TEST_F(BmcInfo, OtherKindsDoNothing) {
    for (const int kind : {-1, 0, 7, 255}) EXPECT_EQ(bmc_info(fakehost::repository(), kind), 1);
    EXPECT_EQ(noted(), "");
}

}  // namespace
