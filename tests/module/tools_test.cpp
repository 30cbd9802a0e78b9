#include "tools/tools.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "bench.h"
#include "bmc_notes.h"

using namespace marlox::repository;

namespace {

class Tools : public Bench {};

// Noted before any test runs.
const struct {
    int word_size = linux_x32_x64;
    int results = abs_path | abs_path2;
    std::string paths = std::string(current_absolute_path) + current_absolute_path_bmc +
                        current_absolute_path2 + fullpath;
} at_load;

TEST_F(Tools, GlobalsAtLoad) {
    EXPECT_EQ(at_load.word_size, 64);
    EXPECT_EQ(at_load.results, 0);
    EXPECT_EQ(at_load.paths, "");
}

TEST_F(Tools, StatusIsJudgedByItsBytes) {
    struct Case {
        int status;
        const char* name;
        int result;
        const char* log;
    };
    const Case cases[] = {
        {-1, "SEL", 1, "3 Failed to get SEL info\n"},
        {0, "MC", 0, "4 Get MC info successfully\n"},
        {9, "MC", 1, "3 Signal terminal while getting MC info,exit status:0\n"},
        {0x0509, "MC", 1, "3 Signal terminal while getting MC info,exit status:5\n"},
        // Stopped counts as not ended; the core-dump bit alone does not.
        {0x137f, "MC", 1, "3 Signal terminal while getting MC info,exit status:19\n"},
        {0x80, "MC", 0, "4 Get MC info successfully\n"},
        {0x0100, "selftest", 0, ""},
        {0x7f00, "selftest", 0, ""},
        {0x0100, "FRU", 0, ""},
        {0x0200, "FRU", 1, "3 Failed to get FRU info,exit code:2\n"},
        {0x0100, "SEL", 1, "3 Failed to get SEL info,exit code:1\n"},
        {0x0100, "fru", 1, "3 Failed to get fru info,exit code:1\n"},
        {0x0100, "Selftest", 1, "3 Failed to get Selftest info,exit code:1\n"},
        {9, "selftest", 1,
         "3 Signal terminal while getting selftest info,exit "
         "status:0\n"},
    };
    for (const auto& [status, name, result, log] : cases) {
        EXPECT_EQ(check_system_call(status, name), result) << std::hex << status << " " << name;
        EXPECT_EQ(noted(), bmc_notes(log)) << std::hex << status << " " << name;
    }
}

TEST_F(Tools, NothingIsLoggedBelowTheThreshold) {
    fakehost::min_log_level = 3;
    EXPECT_EQ(check_system_call(0, "MC"), 0);
    EXPECT_EQ(noted(), "");
    EXPECT_EQ(check_system_call(9, "MC"), 1);
    EXPECT_NE(noted(), "");
    fakehost::min_log_level = 2;
    for (const int status : {-1, 9, 0x0200}) EXPECT_EQ(check_system_call(status, "FRU"), 1);
    EXPECT_EQ(noted(), "");
}

TEST_F(Tools, ProgramDirectoryIsTheLinksDirectory) {
    char buffer[256] = {};
    fake_system.exe_link = "/usr/local/x/host";
    EXPECT_EQ(GetProgramDir(buffer), 0);
    EXPECT_STREQ(buffer, "/usr/local/x/");
    EXPECT_EQ(GetProgramDir(buffer), 0);  // the same into a used buffer
    EXPECT_STREQ(buffer, "/usr/local/x/");
}

TEST_F(Tools, ProgramPathsOf255BytesWork) {
    char buffer[256] = {};
    fake_system.exe_link = "/" + std::string(250, 'd') + "/abc";
    ASSERT_EQ(fake_system.exe_link.size(), 255u);
    EXPECT_EQ(GetProgramDir(buffer), 0);
    EXPECT_EQ(std::string(buffer), "/" + std::string(250, 'd') + "/");
}

// What was read of the path names another directory, and has no end in the buffer.
TEST_F(Tools, LongerPathsAndErrorsArePrintedAndLeaveNoDirectory) {
    char buffer[256] = {};
    fake_system.exe_link = "/" + std::string(251, 'd') + "/abc";
    testing::internal::CaptureStdout();
    EXPECT_EQ(GetProgramDir(buffer), -1);
    EXPECT_STREQ(buffer, "");
    fake_system.exe_link_error = EACCES;
    std::strcpy(buffer, "/earlier/");
    EXPECT_EQ(GetProgramDir(buffer), -1);
    EXPECT_STREQ(buffer, "");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Failed to get current absolute path\nFailed to get current absolute path\n");
    EXPECT_EQ(noted(), "");
}

TEST_F(Tools, ALinkWithoutASlashStays) {
    char buffer[256] = {};
    fake_system.exe_link = "host";
    EXPECT_EQ(GetProgramDir(buffer), 0);
    EXPECT_STREQ(buffer, "host");
}

// The byte behind the link text decides first; readlink() does not write it.
TEST_F(Tools, AUsedBufferWithASlashBehindTheTextKeepsThePath) {
    char buffer[257];
    std::memset(buffer, '/', sizeof buffer);
    fake_system.exe_link = "/usr/local/x/host";
    EXPECT_EQ(GetProgramDir(buffer), 0);
    EXPECT_STREQ(buffer, "/usr/local/x/host/");

    std::memset(buffer, '/', sizeof buffer);
    fake_system.exe_link = "/" + std::string(254, 'p');
    EXPECT_EQ(GetProgramDir(buffer), 0);
    EXPECT_EQ(buffer[256], '/') << "nothing is written behind the 256 bytes";
}

TEST_F(Tools, WordSizeComesFromUname) {
    struct Case {
        std::string answer;
        int bits;
    };
    const Case cases[] = {
        {"x86_64\n", 64},
        {"i386\n", 32},
        {"unknown\n", 32},
        {"", 32},
        {"aarch64\n", 64},
        {"1234567 64\n", 32},
        {"1234567 6", 32},
        {"12345 64\n", 64},
        {"\nx86_64\n", 32},
        {"i386\nx86_64\n", 32},
        {std::string("x\0"
                     "64\n",
                     5),
         32},  // the text ends at its first NUL
        {"1234567"
         "64\n",
         64},
        {"12345678"
         "64\n",
         32},
    };
    for (const auto& [answer, bits] : cases) {
        tool("uname", prints(answer));
        EXPECT_EQ(check_linux_bit(), 0);
        EXPECT_EQ(linux_x32_x64, bits) << answer;
        EXPECT_EQ(noted(), "$ uname -i\n");
    }
}

// Nobody waits for the end of an answer that has none.
TEST_F(Tools, WordSizeFromAnEndlessAnswer) {
    linux_x32_x64 = 32;
    tool("uname", "while echo x86_64; do :; done 2>/dev/null");
    EXPECT_EQ(check_linux_bit(), 0);
    EXPECT_EQ(linux_x32_x64, 64);
}

TEST_F(Tools, WordSizeStaysIfItCannotBeAsked) {
    fake_system.spawn_error = [](std::string_view) { return EAGAIN; };
    linux_x32_x64 = 32;
    EXPECT_EQ(check_linux_bit(), 1);
    EXPECT_EQ(linux_x32_x64, 32);
    EXPECT_EQ(noted(), bmc_notes("$ uname -i\n3 Fail to get the Linux OS structure\n"));
}

TEST_F(Tools, UpperCase) {
    char text[] = "ab-12x";
    EXPECT_EQ(strupr(text), text);
    EXPECT_STREQ(text, "AB-12X");
    char nothing[] = "";
    EXPECT_EQ(strupr(nothing), nothing);
    char marks[] = "@[`{09 \t";
    EXPECT_STREQ(strupr(marks), "@[`{09 \t");
}

// The locale decides what is a lower-case letter. A byte above 127 is a letter in a locale of one
// byte a character alone, and never a negative number.
TEST_F(Tools, UpperCaseOfEveryByte) {
    std::string text;
    std::string expected;
    int letters_above_127 = 0;
    for (int byte = 1; byte <= 255; ++byte) {
        text += static_cast<char>(byte);
        expected += static_cast<char>(std::islower(byte) ? std::toupper(byte) : byte);
        if (byte > 127 && text.back() != expected.back()) ++letters_above_127;
    }
    EXPECT_EQ(strupr(text.data()), text.data());
    EXPECT_EQ(text, expected);

    const char* const locale = std::getenv("QV_TEST_LOCALE");
    const bool latin9 = locale && std::string_view(locale) == "de_DE.ISO-8859-15";
    EXPECT_EQ(letters_above_127, latin9 ? 34 : 0);
    char word[] = "gr\xfc\xdf\xff";  // in Latin-9 the last one is y with two dots
    EXPECT_STREQ(strupr(word), latin9 ? "GR\xdc\xdf\xbe" : "GR\xfc\xdf\xff");
}

TEST_F(Tools, Replacing) {
    struct Case {
        const char* text;
        const char* from;
        const char* to;
        const char* result;
    };
    const Case cases[] = {
        {"one two one", "one", "1", "1 two 1"},
        {"aaa", "a", "aa", "aaaaaa"},  // what was inserted is not searched
        {"aaa", "aa", "b", "ba"},
        {"abc", "", "x", "abc"},
        {"abc", "x", "y", "abc"},
        {"", "x", "y", ""},
    };
    for (const auto& c : cases) {
        char text[32] = {};
        char from[8] = {};
        char to[8] = {};
        std::strcpy(text, c.text);
        std::strcpy(from, c.from);
        std::strcpy(to, c.to);
        StrReplace(text, from, to);
        EXPECT_STREQ(text, c.result);
    }
}

}  // namespace
