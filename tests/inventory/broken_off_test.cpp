// Captures that cannot be read to their end: no reader takes the part that it got for the whole.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "failing_reads.h"
#include "inventory/ipmi/captures.h"
#include "inventory/storage/captures.h"
#include "inventory/survey.h"
#include "inventory/system/captures.h"

namespace qvhost::inventory {
namespace {

namespace fs = std::filesystem;

class BrokenOff : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "broken-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        dir_ = name;
    }
    void TearDown() override { fs::remove_all(dir_); }

    // The path of a capture with this text.
    std::string write(const std::string& name, const std::string& text) const {
        const auto path = dir_ / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }

    Survey survey_all() {
        events_ = 0;
        return survey(dir_, {}, [&](Event&&) { ++events_; });
    }

    // What a survey makes of a log directory with this capture alone, whose second half cannot be read.
    Survey broken(const std::string& name, const std::string& text) {
        fs::remove_all(dir_);
        const test::FailingReads failing(write(name, text));
        return survey_all();
    }

    fs::path dir_;
    int events_ = 0;
};

// "c*_showall.txt" -> "c1_showall.txt"
std::string name_by(std::string pattern) {
    for (auto at = pattern.find('*'); at != std::string::npos; at = pattern.find('*'))
        pattern.replace(at, 1, "1");
    return pattern;
}

const std::string kWhy = "cannot be read: Input/output error";

TEST_F(BrokenOff, NoReaderIsSilent) {
    std::string text;
    for (int i = 0; i < 20; ++i) text += "words of a tool\n";
    for (const auto readers : {storage_captures(), ipmi_captures(), system_captures()}) {
        EXPECT_FALSE(readers.empty());
        for (const auto& reader : readers) {
            const auto name = name_by(reader.pattern);
            const auto found = broken(name, text);
            const auto* const capture = found.find(name);
            ASSERT_NE(capture, nullptr) << name;
            EXPECT_FALSE(capture->whole()) << name;
            ASSERT_FALSE(capture->how.gaps.empty()) << name;
            EXPECT_EQ(capture->how.gaps.front().words, kWhy) << name;
            EXPECT_EQ(capture->how.gaps.front().line, 10) << name;
            EXPECT_EQ(capture->how.lines, 10) << name;
        }
    }
}

// Texts that have no end of their own: but for the error their first half would be all.
TEST_F(BrokenOff, AHalfThatLooksWholeIsNone) {
    const std::pair<const char*, std::string> halves[] = {
        {"host_multipath.txt",
         "mpatha (360050764008100dac000000000000100) dm-2 EXAMPLE,2145\n"
         "size=10G features='0' hwhandler='0' wp=rw\n"
         "`-+- policy='service-time 0' prio=10 status=active\n"
         "  `- 3:0:0:1 sdb 8:16 active ready running\n"},
        {"host_mdadm_md0.txt",
         "/dev/md0:\n        Raid Level : raid1\n             State : clean\n"
         "    Number   Major   Minor   RaidDevice State\n"
         "       0       8        1        0      active sync   /dev/sda1\n"
         "       1       8       17        1      active sync   /dev/sdb1\n"},
        {"host_zpool.txt",
         "  pool: tank\n state: ONLINE\nconfig:\n\n"
         "        NAME        STATE     READ WRITE CKSUM\n"
         "        tank        ONLINE       0     0     0\n"
         "          sda       ONLINE       0     0     0\n\n"
         "errors: No known data errors\n"},
    };
    for (const auto& [name, half] : halves) {
        fs::remove_all(dir_);
        write(name, half);
        const auto alone = survey_all();
        EXPECT_TRUE(alone.find(name)->whole()) << name;
        const auto found = broken(name, half + half);
        EXPECT_EQ(found.inventory.volumes.size(), alone.inventory.volumes.size()) << name;
        EXPECT_FALSE(found.find(name)->whole()) << name;
    }
}

// Captures of one log are read twice: to count their events, and the best one to hand them on.
TEST_F(BrokenOff, ALogThatBreaksOffWhenItIsReadAgain) {
    const auto sel = write(
        "host_sel.txt",
        "   1 | 11/15/26 | 01:13:41 UTC | Fan FAN4 | Lower Non-critical going low  | Asserted\n"
        "   2 | 11/15/26 | 08:14:30 UTC | Fan FAN5 | Lower Non-critical going low  | Asserted\n");
    write("selinfo.txt", "Error: Unable to establish IPMI session\n");
    EXPECT_TRUE(survey_all().find("host_sel.txt")->whole());
    EXPECT_EQ(events_, 2);
    const test::FailingReads failing(sel, 2);
    const auto found = survey_all();
    EXPECT_EQ(events_, 1);
    EXPECT_FALSE(found.find("host_sel.txt")->whole());
    ASSERT_FALSE(found.find("host_sel.txt")->how.gaps.empty());
    EXPECT_EQ(found.find("host_sel.txt")->how.gaps.front().words, kWhy);
}

}  // namespace
}  // namespace qvhost::inventory
