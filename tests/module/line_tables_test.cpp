// SDR, FRU and SEL: each line is a row.
#include <signal.h>

#include <cerrno>

#include "bench.h"
#include "bmc_notes.h"
#include "rbmcinfo/captures.h"
#include "tools/tools.h"

using namespace marlox::repository;

namespace {

class LineTables : public Bench {
protected:
    void answers(const std::string& script) {
        tool("ipmitool", script);
        vendor_tool("ipmiutil_x64_nh", script);
    }
    std::string records(int (*capture)(RRepository&), const std::string& answer) {
        noted();
        answers(prints(answer));
        EXPECT_EQ(capture(fakehost::repository()), 0);
        return noted({"add"});
    }
};

struct Capture {
    int (*read)(RRepository&);
    std::string label;
    std::string command;
    std::string not_opened;
};

const Capture kSdr = {sdr_info, "SDR", "$ ipmitool sdr elist 1>'L/sdrinfo.txt' 2>'L/sdrinfo.txt'\n",
                      "3 Failed to open sdrinfo log file\n"};
const Capture kFru = {fru_info, "FRU", "$ ipmitool fru  1>'L/fruinfo.txt' 2>'L/fruinfo.txt'\n",
                      "3 Failed to open fruinfo log file\n"};
const Capture kFirstFru = {fru_info_amd, "FRU",
                           "$ ipmitool fru print 0 1>'L/fruinfo.txt' 2>'L/fruinfo.txt'\n",
                           "3 Failed to open fruinfo log file\n"};
const Capture kSel = {sel_info, "SEL",
                      "$ 'P/qv_tools/ipmiutil_x64_nh' sel -t 1>'L/selinfo.txt' 2>&1\n",
                      "4 Failed to open SEL log file\n"};
const Capture kAll[] = {kSdr, kFru, kFirstFru, kSel};

std::string sdr(const std::string& value) {
    return "add SDRINFO \"SDR Information\" -1: SDRINFO \"SDR Detailed Info\"=\"" + value + "\"\n";
}
std::string fru(const std::string& value) {
    return "add FRUINFO \"FRU Information\" -1: FRUINFO \"FRU Detailed Info\"=\"" + value + "\"\n";
}
std::string sel(const std::string& value) {
    return "add SELINFO \"SEL Information\" -1: SELINFO \"SEL Info\"=\"" + value + "\"\n";
}

TEST_F(LineTables, InFull) {
    const std::pair<Capture, std::string> cases[] = {
        // Split lines, each logged with a blank behind it.
        {kSdr,
         "4 se:one\\n\\nError two\\n\n4 one \n" + sdr("one") + "4 Error two \n" + sdr("Error two")},
        {kFirstFru,
         "4 se:one\\n\\nError two\\n\n4 one \n" + fru("one") + "4 Error two \n" + fru("Error two")},
        // Lines as they are.
        {kFru, "3 Oru Debug fru info 4\n" + fru("one\\n") + fru("\\n") + fru("Error two\\n")},
        {kSel, sel("one\\n") + sel("\\n") + sel("Error two\\n")},
    };
    answers(prints("one\n\nError two\n"));
    for (const auto& [capture, parsed] : cases) {
        for (const unsigned level : {2u, 3u, 4u}) {
            fakehost::min_log_level = level;
            EXPECT_EQ(capture.read(fakehost::repository()), 0);
            EXPECT_EQ(noted(), bmc_notes(capture.command + "4 Get " + capture.label +
                                             " info successfully\n" + parsed,
                                         level));
        }
    }
}

TEST_F(LineTables, SplitLinesHaveNoEnds) {
    for (const std::string answer : {"a\n\r\n\n b |c\r\nd", "\n\na\n b |c\nd\n\n"}) {
        EXPECT_EQ(records(sdr_info, answer), sdr("a") + sdr(" b |c") + sdr("d"));
        EXPECT_EQ(records(fru_info_amd, answer), fru("a") + fru(" b |c") + fru("d"));
    }
    for (const char* answer : {"", "\n", "\r\n\n"}) {
        EXPECT_EQ(records(sdr_info, answer), "");
        EXPECT_EQ(records(fru_info_amd, answer), "");
    }
    // Not cut at 511 bytes, but the whole text ends at its first NUL.
    const std::string whole(600, 'x');
    EXPECT_EQ(records(sdr_info, whole + "\n"), sdr(whole));
    EXPECT_EQ(records(fru_info_amd, whole + "\n"), fru(whole));
    const std::string nul("a\nb\0c\nd\n", 8);
    EXPECT_EQ(records(sdr_info, nul), sdr("a") + sdr("b"));
    EXPECT_EQ(records(fru_info_amd, nul), fru("a") + fru("b"));
}

// A host may count the records that are made, not only those that are added.
TEST_F(LineTables, WithoutALineThereIsNoRecord) {
    for (const std::string& answer :
         {std::string(), std::string("\n\r\n"), std::string("\0a\n", 3)}) {
        for (const auto capture : {sdr_info, fru_info_amd}) {
            EXPECT_EQ(records(capture, answer), "");
            EXPECT_EQ(fakehost::records_made, 0) << fakehost::escaped(answer);
        }
    }
    EXPECT_EQ(records(sdr_info, "a\nb\n"), sdr("a") + sdr("b"));
    EXPECT_EQ(records(fru_info_amd, "a\nb\n"), fru("a") + fru("b"));
    EXPECT_EQ(fakehost::records_made, 2) << "one a table, for all rows";
}

TEST_F(LineTables, OtherLinesAreKeptAsTheyAre) {
    const std::string x510(510, 'x');
    const auto x511 = x510 + "x";
    struct Case {
        std::string answer;
        std::vector<std::string> values;
    };
    const Case cases[] = {
        {"", {}},
        {"\n", {"\\n"}},
        {"a\n\nb", {"a\\n", "\\n", "b"}},
        {"a\r\n\r\n", {"a\\r\\n", "\\r\\n"}},
        {"  a : b | c \t\n", {"  a : b | c \\t\\n"}},
        // A line has at most 511 bytes.
        {x510 + "\n", {x510 + "\\n"}},
        {x511, {x511}},
        {x511 + "\n", {x511, "\\n"}},
        {x511 + "x\n", {x511, "x\\n"}},
        {std::string(600, 'x') + "\n", {x511, std::string(89, 'x') + "\\n"}},
        {x511 + x511 + "y\nz", {x511, x511, "y\\n", "z"}},
        // What stands behind a NUL in a line is lost, its end included.
        {std::string("a\0b\nc\n", 6), {"a", "c\\n"}},
        {std::string("\0\n\0", 3), {"", ""}},
        {x510 + std::string("\0y\nz\n", 5), {x510, "y\\n", "z\\n"}},
        {"\xff\xfe\n", {"\xff\xfe\\n"}},
    };
    for (const auto& [answer, values] : cases) {
        std::string frus;
        std::string sels;
        for (const auto& value : values) {
            frus += fru(value);
            sels += sel(value);
        }
        EXPECT_EQ(records(fru_info, answer), frus);
        EXPECT_EQ(records(sel_info, answer), sels);
    }
}

TEST_F(LineTables, FortyLinesAreFortyRows) {
    std::string answer;
    std::string rows;
    for (int i = 1; i <= 40; ++i) {
        answer += "line " + std::to_string(i) + "\n";
        rows += fru("line " + std::to_string(i) + "\\n");
    }
    EXPECT_EQ(records(fru_info, answer), rows);
}

TEST_F(LineTables, LongAnswersAreKeptWhole) {
    fakehost::min_log_level = 2;
    std::string answer;
    std::string pieces;
    std::string whole;
    for (std::size_t i = 0; answer.size() < 3'000'000; ++i) {
        const std::string line(i * 37 % 1500, static_cast<char>('a' + i % 26));
        answer += line + "\n";
        if (!line.empty()) whole += sdr(line);
        std::size_t at = 0;
        for (; line.size() - at >= 511; at += 511) pieces += sel(line.substr(at, 511));
        pieces += sel(line.substr(at) + "\\n");
    }
    EXPECT_TRUE(records(sel_info, answer) == pieces);
    EXPECT_TRUE(records(sdr_info, answer) == whole);
}

// Two descriptors, two positions: the second stream writes over the first.
TEST_F(LineTables, StandardErrorOverwritesTheStartOfAList) {
    answers("printf 'abcdefgh\\n'; printf 'XY' >&2");
    EXPECT_EQ(sdr_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), sdr("XYcdefgh"));
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), fru("XYcdefgh\\n"));
    EXPECT_EQ(fru_info_amd(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), fru("XYcdefgh"));
    // The event log has one.
    EXPECT_EQ(sel_info(fakehost::repository()), 0);
    EXPECT_EQ(noted({"add"}), sel("abcdefgh\\n") + sel("XY"));
}

TEST_F(LineTables, SelFollowsTheWordSize) {
    for (const char* build : {"x32", "x64"})
        vendor_tool(std::string("ipmiutil_") + build + "_nh", "exit 0");
    for (const auto& [bits, build] : {std::pair{32, "x32"}, {64, "x64"}, {16, "x64"}}) {
        linux_x32_x64 = bits;
        EXPECT_EQ(sel_info(fakehost::repository()), 0);
        EXPECT_EQ(noted({"$"}), std::string("$ 'P/qv_tools/ipmiutil_") + build +
                                    "_nh' sel -t 1>'L/selinfo.txt' 2>&1\n");
    }
}

// ipmitool exits with 1 when it could read some of the devices only.
TEST_F(LineTables, ExitCode1OfFruIsAccepted) {
    answers(prints("a\n", 1));
    EXPECT_EQ(fru_info(fakehost::repository()), 0);
    EXPECT_EQ(noted(), bmc_notes(kFru.command + "3 Oru Debug fru info 4\n" + fru("a\\n")));
    EXPECT_EQ(fru_info_amd(fakehost::repository()), 0);
    EXPECT_EQ(noted(), bmc_notes(kFirstFru.command + "4 se:a\\n\n4 a \n" + fru("a")));
    for (const auto& capture : {kSdr, kSel}) {
        EXPECT_EQ(capture.read(fakehost::repository()), 1);
        EXPECT_EQ(noted(), bmc_notes(capture.command + "3 Failed to get " + capture.label +
                                     " info,exit code:1\n"));
    }
}

TEST_F(LineTables, FailedCommandsAreNotRead) {
    for (const auto& capture : kAll) {
        answers(prints("a\n", 2));
        EXPECT_EQ(capture.read(fakehost::repository()), 1);
        EXPECT_EQ(noted(), bmc_notes(capture.command + "3 Failed to get " + capture.label +
                                     " info,exit code:2\n"));
        answers("echo a; " + dies_by(SIGTERM));
        EXPECT_EQ(capture.read(fakehost::repository()), 1);
        EXPECT_EQ(noted(), bmc_notes(capture.command + "3 Signal terminal while getting " +
                                     capture.label + " info,exit status:0\n"));
        fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
        EXPECT_EQ(capture.read(fakehost::repository()), 1);
        EXPECT_EQ(noted(),
                  bmc_notes(capture.command + "3 Failed to get " + capture.label + " info\n"));
        fake_system.spawn_error = {};
    }
}

TEST_F(LineTables, CapturesThatCannotBeOpened) {
    answers("rm -f '" + log_dir + "'*.txt");
    for (const auto& capture : kAll) {
        EXPECT_EQ(capture.read(fakehost::repository()), 1);
        EXPECT_EQ(noted(), bmc_notes(capture.command + "4 Get " + capture.label +
                                     " info successfully\n" + capture.not_opened));
    }
}

}  // namespace
