// The event log: ipmitool sel list, sel elist, sel info, ipmiutil sel.
#include <gtest/gtest.h>

#include "beside.h"
#include "inventory/ipmi/meaning.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/sel_time.h"
#include "reading_text.h"

namespace qvhost::inventory::test {
namespace {

TEST(Sel, EntriesOfIpmitool) {
    const std::string text =
        "   1 | 11/14/23 | 22:13:20 UTC | Button Power Button | Power Button pressed | Asserted\n"
        "   4 | 08/06/2020 | 01:13:41 | Fan FAN4 | Lower Non-critical going low  | Asserted | Reading 840 < Threshold 960 RPM\n"
        "   5 | 11/15/23 | 02:13:48 UTC | Fan #0x1f | Lower Critical going low  | Asserted\n"
        "   9 | 11/15/23 | 06:14:16 UTC | Temperature CPU2 Temp | Upper Non-critical going high | Deasserted | Reading 88 < Threshold 90 degrees C\n"
        "   a | 11/15/23 | 07:14:23 UTC | Memory Memory ECC | Correctable ECC | Asserted\n"
        "   b | 11/15/23 | 08:14:30 UTC | Memory Memory ECC | Uncorrectable ECC | Asserted\n"
        "   c | 10/26/2014 | 08:17:48 PM | Power Unit #0x02 | Fully Redundant | Deasserted\n"
        "  16 | 11/15/23 | 19:15:47 UTC | Unknown OEM Probe |  | Asserted\n"
        "  1d | 11/16/23 | 02:16:36 UTC | OEM record c1 | 0f4240 | 01020304051c\n"
        "  1f | OEM record e5 | 4f454d2d6e6f74652d30303330\n"
        "  25 |  Pre-Init  |0000000292| Processor CPU2 Status | Thermal Trip | Asserted\n"
        "  26 | 01/01/70 | 00:04:52 | Processor CPU2 Status | IERR | Asserted\n";
    const std::string all =
        "1 bmc 2023-11-14T22:13:20 info [Power Button] Button: Power Button pressed, Asserted\n"
        "2 bmc 2020-08-06T01:13:41 warning [FAN4] Fan: Lower Non-critical going low, Asserted, Reading 840 < Threshold 960 RPM\n"
        "3 bmc 2023-11-15T02:13:48 critical [Fan #0x1f] Fan: Lower Critical going low, Asserted\n"
        "4 bmc 2023-11-15T06:14:16 info [CPU2 Temp] Temperature: Upper Non-critical going high, Deasserted, Reading 88 < Threshold 90 degrees C\n"
        "5 bmc 2023-11-15T07:14:23 info [Memory ECC] Memory: Correctable ECC, Asserted\n"
        "6 bmc 2023-11-15T08:14:30 critical [Memory ECC] Memory: Uncorrectable ECC, Asserted\n"
        "7 bmc 2014-10-26T20:17:48 warning [Power Unit #0x02] Power Unit: Fully Redundant, Deasserted\n"
        "8 bmc 2023-11-15T19:15:47 info [OEM Probe] Unknown: Asserted\n"
        "9 bmc 2023-11-16T02:16:36 info [] OEM record c1 0f4240 01020304051c\n"
        "10 bmc - info [] OEM record e5 4f454d2d6e6f74652d30303330\n"
        "11 bmc - critical [CPU2 Status] Processor: Thermal Trip, Asserted\n"
        "12 bmc - critical [CPU2 Status] Processor: IERR, Asserted\n";
    EXPECT_EQ(read(text, read_sel).all(), all);
    EXPECT_EQ(read(with_crlf(text), read_sel).all(), all);
    EXPECT_EQ(read(text.substr(0, text.size() - 1), read_sel).all(), all);
    EXPECT_EQ(
        read("1,10/26/2014,20:17:47,Power Supply #0x51,Power Supply AC lost,Asserted\n", read_sel)
            .all(),
        "1 bmc 2014-10-26T20:17:47 warning [Power Supply #0x51] Power Supply: Power Supply AC lost, Asserted\n");
}

TEST(Sel, AnEmptyLogIsWholeAndAnEmptyAnswerIsNot) {
    EXPECT_EQ(read("SEL has no entries\n", read_sel).all(), "");
    EXPECT_EQ(
        read("Get SEL Info command failed\n", read_sel).all(),
        "gap 1: no entry, and no word that there is none\nerror 1: Get SEL Info command failed\n");
    EXPECT_EQ(
        read("   1 | 11/14/23 | 22:13:20 UTC | Memory Memory ECC | Uncorr", read_sel).all(),
        "gap 1: the capture ends in the middle of an entry\ngap 1: no entry, and no word that there is none\n");
    EXPECT_EQ(
        read("   1 | 11/14/23 | 22:1\n", read_sel).all(),
        "gap 1: not an entry of the event log\ngap 1: no entry, and no word that there is none\n");
}

constexpr std::string_view kIpmiutil =
    "ipmiutil sel version 3.18\n"
    "-- BMC version 2.71, IPMI version 2.0 \n"
    "SEL Ver 0 Support 0b, Size = 0 records (Used=9, Free=4087)\n"
    "RecId Date/Time_______ SEV Src_ Evt_Type___ Sens# Evt_detail - Trig [Evt_data]\n"
    "0004 11/15/23 01:13:41 MIN BMC  Fan #17  Lo Noncrit thresh act=07 thr=08\n"
    "0005 11/15/23 02:13:48 MAJ BMC  Fan #17 FAN4  Lo Crit thresh actual=480.00 RPM, threshold=720.00 RPM\n"
    "0006 11/15/23 03:13:55 INF BMC  Power Supply #2c  AC Lost 6f [03 ff ff]\n"
    "0009 11/15/23 06:14:16 INF BMC  Temperature #02  HiN thresh OK now act=58 thr=5a\n"
    "000b 11/15/23 08:14:30 MAJ BMC  Memory #31  Uncorrectable ECC, DIMM(11) 6f [a1 00 0b]\n"
    "0016 11/15/23 19:15:47 CRT BMC  OEM(c8) #3f  - 70 [a2 11 22]\n"
    "001d 11/16/23 02:16:36 INF c1 0f4240 OEM Event 01 02 03 04 05 1c \n"
    "001f INF e5 OEM Event 4f 45 4d 2d 6e 6f 74 65 2d 30 30 33 30 \n"
    "0025 01/01/70 00:04:52 MIN BMC  Processor #30  Throttled 6f [0a ff ff]\n"
    "ipmiutil sel, completed successfully\n";

constexpr std::string_view kIpmiutilEvents =
    "5 bmc 2023-11-15T01:13:41 warning [Fan #17] Fan: Lo Noncrit thresh act=07 thr=08\n"
    "6 bmc 2023-11-15T02:13:48 critical [FAN4] Fan: Lo Crit thresh actual=480.00 RPM, threshold=720.00 RPM\n"
    "7 bmc 2023-11-15T03:13:55 warning [Power Supply #2c] Power Supply: AC Lost\n"
    "8 bmc 2023-11-15T06:14:16 info [Temperature #02] Temperature: HiN thresh OK now act=58 thr=5a\n"
    "9 bmc 2023-11-15T08:14:30 critical [Memory #31] Memory: Uncorrectable ECC, DIMM(11)\n"
    "10 bmc 2023-11-15T19:15:47 critical [OEM(c8) #3f] OEM(c8): -\n"
    "11 bmc 2023-11-16T02:16:36 info [] c1 0f4240 OEM Event 01 02 03 04 05 1c\n"
    "12 bmc - info [] e5 OEM Event 4f 45 4d 2d 6e 6f 74 65 2d 30 30 33 30\n"
    "13 bmc - warning [Processor #30] Processor: Throttled\n";

TEST(IpmiutilSel, EntriesOfVersion3) {
    const auto made = read(kIpmiutil, read_ipmiutil_sel);
    EXPECT_EQ(made.all(), kIpmiutilEvents);
    ASSERT_EQ(made.found.sel_logs.size(), 1U);
    EXPECT_EQ(made.found.sel_logs[0].entries, 9);
    EXPECT_NEAR(*made.found.sel_logs[0].used_percent, 100.0 * 9 / 4096, 1e-9);
    EXPECT_EQ(made.found.sel_logs[0].place.line, 3);
    EXPECT_EQ(read(with_crlf(kIpmiutil), read_ipmiutil_sel).all(), kIpmiutilEvents);
}

TEST(IpmiutilSel, EntriesOfVersion2) {
    EXPECT_EQ(
        read("ipmiutil ver 2.21\n"
             "showsel: version 2.21\n"
             "-- BMC version 0.19, IPMI version 2.0 \n"
             "SEL Ver 51 Support f, Size = 3987 records, Free space = 3984 records\n"
             "RecId Date/Time_______ Source_ Evt_Type SensNum Evt_detail - Trig [Evt_data]\n"
             "0068 07/16/08 11:12:55 BMC  08 Power Supply #70 Removed ef [40 0f ff]\n"
             "011c 07/16/08 11:31:41 BMC  09 Power Unit #02 Redundancy OK   0b [40 0f ff]\n"
             "1a08 08/12/08 01:57:20 SMI  20 OS Critical Stop #64 panic(dop) 6f [a1 6f 70]\n"
             "showsel, completed successfully\n",
             read_ipmiutil_sel)
            .all(),
        "6 bmc 2008-07-16T11:12:55 warning [Power Supply #70] Power Supply: Removed\n"
        "7 bmc 2008-07-16T11:31:41 info [Power Unit #02] Power Unit: Redundancy OK\n"
        "8 bmc 2008-08-12T01:57:20 critical [OS Critical Stop #64] OS Critical Stop: panic(dop)\n");
}

TEST(IpmiutilSel, CanonicalEntries) {
    EXPECT_EQ(
        read(
            "SEL  Size = 0 records (Used=2, Free=4036)\n"
            "RecId | Date/Time  | SEV | Src | Evt_Type | Sensor | Evt_detail \n"
            "0004 | 11/15/23 01:13:41 | MIN | BMC  | Fan | FAN4  | Lo Noncrit thresh actual=840.00 RPM, threshold=960.00 RPM\n"
            "000b | 11/15/23 08:14:30 | MAJ | BMC  | Memory | na  | Uncorrectable ECC, DIMM(11) \n",
            read_ipmiutil_sel)
            .all(),
        "3 bmc 2023-11-15T01:13:41 warning [FAN4] Fan: Lo Noncrit thresh actual=840.00 RPM, threshold=960.00 RPM\n"
        "4 bmc 2023-11-15T08:14:30 critical [] Memory: Uncorrectable ECC, DIMM(11)\n");
}

TEST(IpmiutilSel, WhatIsMissingIsSaid) {
    const std::string text(kIpmiutil);
    const auto lines_of = [&](int count) {
        std::size_t end = 0;
        for (int i = 0; i < count; ++i) end = text.find('\n', end) + 1;
        return text.substr(0, end);
    };
    EXPECT_EQ(read(lines_of(5), read_ipmiutil_sel).all(),
              "5 bmc 2023-11-15T01:13:41 warning [Fan #17] Fan: Lo Noncrit thresh act=07 thr=08\n"
              "gap 5: 9 entries announced, 1 read\n");
    EXPECT_EQ(read("sel: Get SEL Info error 192, Node busy\n", read_ipmiutil_sel).all(),
              "gap 1: no count of entries\nerror 1: sel: Get SEL Info error 192, Node busy\n");
    EXPECT_EQ(
        read(
            "sel: invalid option -- 't'\nipmiutil sel version 3.18\nUsage: ipmiutil sel [-b]\n   -b  interpret\n"
            "ipmiutil sel, usage or help requested\n",
            read_ipmiutil_sel)
            .all(),
        "gap 5: no count of entries\nerror 1: sel: invalid option -- 't'\nerror 3: the tool printed its usage\n");
}

// A log that is cut anywhere tells no more than what stands before the cut, and says that it is cut.
TEST(IpmiutilSel, ACutIsNoticed) {
    const std::string text(kIpmiutil);
    const auto end = text.find("\nipmiutil sel, completed");
    for (std::size_t size = 1; size < end; ++size) {
        const auto made = read(std::string_view(text).substr(0, size), read_ipmiutil_sel);
        EXPECT_TRUE(!made.how.whole() || made.events.size() == 9) << size;
        for (const auto& event : made.events)
            EXPECT_NE(kIpmiutilEvents.find(describe({event})), std::string_view::npos) << size;
    }
}

TEST(SelInfo, HowFullTheLogIs) {
    const auto log_of = [](std::string_view text) {
        const auto made = read(text, read_sel_info);
        if (made.found.sel_logs.empty()) return std::string("none\n") + made.all();
        const auto& log = made.found.sel_logs[0];
        char shown_log[100];
        std::snprintf(shown_log, sizeof shown_log, "%d: %d %.2f %d\n",
                      static_cast<int>(log.place.line), static_cast<int>(log.entries.value_or(-1)),
                      log.used_percent.value_or(-1),
                      log.overflow ? static_cast<int>(*log.overflow) : -1);
        return shown_log + made.all();
    };
    EXPECT_EQ(
        log_of(
            "SEL Information\nVersion          : 1.5 (v1.5, v2 compliant)\nEntries          : 428\n"
            "Free Space       : 65535 bytes or more\nPercent Used     : unknown\n"
            "Overflow         : false\n# of Alloc Units : 4000\n# Free Units     : 3572\nMax Record Size  : 1\n"),
        "3: 428 10.70 0\n");
    EXPECT_EQ(
        log_of(
            "Entries          : 60\nFree Space       : 64576 bytes \nPercent Used     : unknown\nOverflow         : true\n"
            "# of Alloc Units : 0\n# Free Units     : 64576\n"),
        "1: 60 1.46 1\n");
    EXPECT_EQ(
        log_of(
            "Entries          : 9\nFree Space       : 65535 bytes or more\nPercent Used     : unknown\nOverflow         : false\n"),
        "1: 9 -1.00 0\n");
    EXPECT_EQ(log_of("Entries          : 9\nPercent Used     : 93%\nOverflow         : false\n"),
              "1: 9 93.00 0\n");
    EXPECT_EQ(log_of("Get SEL Info command failed\n"),
              "none\ngap 1: no count of entries\nerror 1: Get SEL Info command failed\n");
    EXPECT_EQ(
        log_of("Entries          : 9\nPerc"),
        "1: 9 -1.00 -1\ngap 2: the capture ends in the middle of a line\ngap 2: no word on an overflow\n");
}

TEST(BmcTime, DatesOfSeveralLocales) {
    struct Case {
        const char *date, *time, *iso;
    };
    for (const auto& [date, time, iso] : {
             Case{"11/14/23", "22:13:20 UTC", "2023-11-14T22:13:20"},
             Case{"11/14/2023", "22:13:20", "2023-11-14T22:13:20"},
             Case{"14.11.2023", "22:13:20", "2023-11-14T22:13:20"},
             Case{"2023-11-14", "22:13:20", "2023-11-14T22:13:20"},
             Case{"14/11/23", "22:13:20", "2023-11-14T22:13:20"},
             Case{"11/14/23", "10:13:20 PM UTC", "2023-11-14T22:13:20"},
             Case{"11/14/23", "12:13:20 AM", "2023-11-14T00:13:20"},
             Case{"01/01/70", "00:00:10", ""},
             Case{"12/31/99", "23:59:59", ""},
             Case{"13/13/23", "22:13:20", ""},
             Case{"11/14/23", "25:13:20", ""},
             Case{"11/14", "22:13:20", ""},
             Case{"", "", ""},
         }) {
        EXPECT_EQ(bmc_time(date, time).value_or(""), iso) << date << " " << time;
    }
    EXPECT_TRUE(is_bmc_time("01/01/70", "00:00:10"));
    EXPECT_FALSE(is_bmc_time("11/14/23", "22:1"));
}

TEST(Meaning, TheLongestRowDecides) {
    struct Case {
        const char* words;
        std::optional<Severity> severity;
    };
    for (const auto& [words, severity] : {
             Case{"Correctable ECC", Severity::info},
             Case{"Correctable ECC logging limit reached", Severity::warning},
             Case{"correctable ecc, DIMM(5)", Severity::info},
             Case{"Uncorrectable ECC, DIMM(5)", Severity::critical},
             Case{"Fully Redundant", Severity::info},
             Case{"Redundancy Lost", Severity::warning},
             Case{"Non-Redundant: Insufficient Resources", Severity::critical},
             Case{"Fatal 03:00.0", Severity::critical},
             Case{"Fatality", std::nullopt},
             Case{"Drive Present", Severity::info},
             Case{"Drive", std::nullopt},
             Case{"", std::nullopt},
             Case{"zzz", std::nullopt},
         }) {
        EXPECT_EQ(severity_of_state(words), severity) << words;
    }
    EXPECT_EQ(severity_of_deasserted("Presence detected"), Severity::warning);
    EXPECT_EQ(severity_of_deasserted("Redundancy Lost"), Severity::info);
    EXPECT_EQ(severity_of_threshold("Upper Critical going high"), Severity::critical);
    EXPECT_EQ(severity_of_threshold("Upper Critical going low"), Severity::info);
    EXPECT_EQ(severity_of_threshold("Log full"), std::nullopt);
}

TEST(Sel, CapturesHaveAsManyEventsAsEntries) {
    const auto samples = folder_beside("ipmi_sim/samples");
    if (samples.empty()) GTEST_SKIP() << "no captures beside the repository";
    const auto elist = read(content(samples + "/ipmitool_sel_elist.txt"), read_sel);
    const auto table = read(content(samples + "/ipmiutil_sel.txt"), read_ipmiutil_sel);
    EXPECT_TRUE(elist.how.whole());
    EXPECT_TRUE(table.how.whole());
    ASSERT_EQ(elist.events.size(), 60U);
    ASSERT_EQ(table.events.size(), 60U);
    for (std::size_t i = 0; i < 60; ++i) {
        EXPECT_EQ(elist.events[i].time, table.events[i].time) << i;
        EXPECT_EQ(elist.events[i].severity, table.events[i].severity) << i;
    }
}

}  // namespace
}  // namespace qvhost::inventory::test
