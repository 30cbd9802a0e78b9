// Captures that end anywhere: no reader makes up what the cut took away.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "inventory/ipmi/captures.h"
#include "inventory/ipmi/join.h"
#include "inventory/ipmi/readers.h"
#include "inventory/system/captures.h"
#include "inventory/system/join.h"
#include "inventory/system/readers.h"
#include "reading_text.h"

namespace qvhost::inventory::test {
namespace {

struct Sample {
    const char* file;  // of the recorded server
    void (*read)(CaptureLines&, Reading&);
    bool notices_every_cut;  // but one at a line's end, or behind a value that is whole by its form
};

constexpr Sample kSamples[] = {
    {"bmc_sensor.txt", read_sensors, true},
    {"bmc_sdr.txt", read_sdr, true},
    {"bmc_fru.txt", read_fru, false},
    {"bmc_sel.txt", read_ipmiutil_sel, true},
    {"bmc_mc.txt", read_mc_info, false},
    {"bmc_selftest.txt", read_selftest, true},
    {"bmc_lan.txt", read_oem_lan, false},
    {"bmc_led.txt", read_oem_leds, false},
    {"bmc_psu.txt", read_oem_power_supplies, true},
    {"bmc_ver.txt", read_oem_versions, true},
    {"bmc_sensor_ids.txt", read_ipmiutil_sensors, false},
    {"dmidecode.txt", read_dmidecode, true},
    {"cpuinfo.txt", read_cpuinfo, true},
    {"dmesg.txt", read_dmesg, true},
    {"lspci.txt", read_lspci, true},
    {"cmdline.txt", read_cmdline, false},
};

std::set<std::string> lines_of(const std::string& text) {
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.insert(line);
    return lines;
}

class Cut : public testing::TestWithParam<Sample> {};

TEST_P(Cut, IsNoticedAndMakesNothingUp) {
    constexpr std::size_t kEnough = 2000;
    const auto& [file, reader, notices] = GetParam();
    const auto text = content(std::string(QV_SAMPLES) + "/x86_64-kp220-megaraid/" + file);
    ASSERT_FALSE(text.empty());
    std::size_t unnoticed = 0;
    for (std::size_t size = 1; size < std::min(text.size(), kEnough); ++size) {
        const auto cut = std::string_view(text).substr(0, size);
        Read made = read(cut, reader);
        const bool at_line_end = text[size] == '\n' || text[size] == '\r' || text[size - 1] == '\n';
        if (!at_line_end && made.how.whole() && made.how.not_understood == 0) ++unnoticed;
        join_bmc(made.found);
        join_machine(made.found);
    }
    // A few cuts leave a row that looks whole: "ok  |  3.1 | " is a discrete sensor without a state.
    if (notices) {
        EXPECT_LE(unnoticed, std::min(text.size(), kEnough) / 40);
    }
}

INSTANTIATE_TEST_SUITE_P(Readers, Cut, testing::ValuesIn(kSamples), [](const auto& row) {
    std::string name = row.param.file;
    for (char& c : name)
        if (c == '.') c = '_';
    return name;
});

// What a cut capture of sensors tells is what the whole one tells there.
TEST(CutSensors, HaveNoOtherValues) {
    const auto text = content(std::string(QV_SAMPLES) + "/x86_64-kp220-megaraid/bmc_sensor.txt");
    const auto whole = lines_of(read(text, read_sensors).entities());
    for (std::size_t size = 1; size < text.size(); size += 11) {
        const auto made = read(std::string_view(text).substr(0, size), read_sensors);
        for (const auto& line : lines_of(made.entities())) {
            const bool is_told = whole.contains(line) || whole.lower_bound(line) != whole.end();
            EXPECT_TRUE(is_told) << size << ": " << line;
            // Only the last threshold may be missing.
            if (!whole.contains(line)) {
                EXPECT_TRUE(whole.lower_bound(line)->starts_with(line)) << size << ": " << line;
                EXPECT_FALSE(made.how.whole());
            }
        }
    }
}

TEST(Captures, PatternsAreNamedOnceAndHaveAReader) {
    std::set<std::string> patterns;
    for (const auto& captures : {ipmi_captures(), system_captures()}) {
        for (const auto& row : captures) {
            EXPECT_TRUE(patterns.insert(row.pattern).second) << row.pattern;
            ASSERT_NE(row.read, nullptr);
            EXPECT_FALSE(read("", row.read).how.whole()) << row.pattern;
        }
    }
}

}  // namespace
}  // namespace qvhost::inventory::test
