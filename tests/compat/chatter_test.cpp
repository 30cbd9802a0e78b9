// The one line that is taken out of what ipmitool prints.
#include <gtest/gtest.h>

#include "compat/chatter.h"

namespace test {

namespace {

using qvhost::compat::ChatterFilter;

const std::string kChatter = "IANA PEN registry open failed: No such file or directory";

struct Row {
    std::string printed;
    std::string passed;
    std::string taken;
};

const Row kRows[] = {
    {"", "", ""},
    {kChatter + "\n", "", kChatter},
    {kChatter + "\nFan 1 | 4200\n", "Fan 1 | 4200\n", kChatter},
    {"Fan 1\n" + kChatter + "\nFan 2", "Fan 1\nFan 2", kChatter},
    {kChatter + "\n" + kChatter + "\n", "", kChatter},
    // Lines that only look like it.
    {kChatter, kChatter, ""},
    {" " + kChatter + "\n", " " + kChatter + "\n", ""},
    {kChatter + " \n", kChatter + " \n", ""},
    {kChatter + "\r\n", kChatter + "\r\n", ""},
    {"IANA PEN registry open failed: \n", "IANA PEN registry open failed: \n", ""},
    {"IANA PEN registry open failed: nothing\n", "IANA PEN registry open failed: nothing\n", ""},
    {"IANA PEN registry\n", "IANA PEN registry\n", ""},
    {"I\n\nIANA", "I\n\nIANA", ""},
    {"IANA PEN registry open failed: Permission denied\n|", "|",
     "IANA PEN registry open failed: Permission denied"},
    {std::string("a\0\n\0", 4), std::string("a\0\n\0", 4), ""},
};

std::string passed_in_pieces(ChatterFilter& filter, const std::string& printed, std::size_t size) {
    std::string passed;
    for (std::size_t at = 0; at < printed.size(); at += size)
        passed += filter.pass(printed.substr(at, size));
    return passed + filter.rest();
}

TEST(Chatter, OneLineIsTakenOutAndNothingElse) {
    for (const auto& row : kRows) {
        for (const std::size_t size : {1u, 2u, 3u, 7u, 1000u}) {
            ChatterFilter filter;
            EXPECT_EQ(passed_in_pieces(filter, row.printed, size), row.passed) << row.printed;
            EXPECT_EQ(filter.taken(), row.taken) << row.printed;
        }
    }
}

// A tool that prints a prompt and waits must be seen to have printed it.
TEST(Chatter, NothingElseIsHeldBack) {
    ChatterFilter filter;
    EXPECT_EQ(filter.pass("Password: "), "Password: ");
    EXPECT_EQ(filter.pass("\nIANA is not meant"), "\nIANA is not meant");
    EXPECT_EQ(filter.pass("\nIANA PEN"), "\n");
    EXPECT_EQ(filter.rest(), "IANA PEN");
}

}  // namespace

}  // namespace test
