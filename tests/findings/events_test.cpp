#include "findings/events.h"

#include <gtest/gtest.h>

#include "told.h"

namespace qvhost::findings {
namespace {

using inventory::Event;
using EventSeverity = inventory::Severity;

constexpr const char* kNow = "2026-11-21T12:00:00";

Event event(const char* source, const char* time, EventSeverity severity, const char* subject,
            const char* text) {
    Event one;
    one.place = {"selinfo.txt", 1};
    one.source = source;
    if (*time) one.time = time;
    one.severity = severity;
    if (*subject) one.subject = subject;
    one.text = text;
    return one;
}

Lines judged(const std::vector<Event>& events, const inventory::Inventory& inventory = {}) {
    EventJudge judge;
    for (const auto& one : events) judge.take(one);
    Collector findings;
    judge.finish(inventory, kNow, findings);
    return told(findings);
}

TEST(Events, AnUncorrectedMemoryErrorIsCriticalForAWeek) {
    const auto at = [](const char* time) {
        return judged({event("bmc", time, EventSeverity::critical, "DIMM A1",
                             "Uncorrectable ECC | Asserted")});
    };
    EXPECT_EQ(
        at("2026-11-20T12:00:00"),
        Lines{"critical event_memory_error:DIMM_A1 | DIMM A1 | Uncorrectable ECC | Asserted"});
    EXPECT_EQ(
        at("2026-11-14T12:00:00"),
        Lines{"critical event_memory_error:DIMM_A1 | DIMM A1 | Uncorrectable ECC | Asserted"});
    EXPECT_EQ(at("2026-11-14T11:00:00"),
              Lines{"warning event_memory_error:DIMM_A1 | DIMM A1 | Uncorrectable ECC | Asserted"});
    // A clock that was never set: as new as what came before it.
    EXPECT_EQ(
        at(""),
        Lines{"critical event_memory_error:DIMM_A1 | DIMM A1 | Uncorrectable ECC | Asserted"});
}

TEST(Events, AnEventWithoutATimeIsAsOldAsTheOneBeforeIt) {
    EXPECT_EQ(
        judged({event("bmc", "2020-01-01T00:00:00", EventSeverity::info, "X", "Presence detected"),
                event("bmc", "", EventSeverity::critical, "DIMM A1", "Uncorrectable ECC")}),
        Lines{"warning event_memory_error:DIMM_A1 | DIMM A1 | Uncorrectable ECC"});
}

TEST(Events, ADrivesHardwareErrorIsNotTheProcessors) {
    EXPECT_EQ(judged({event("kernel", "", EventSeverity::critical, "sda",
                            "sd 0:2:0:0: [sda] Sense Key : Hardware Error [current]")}),
              Lines{"warning event_disk:sda | sda | sd 0:2:0:0: [sda] Sense Key : Hardware Error "
                    "[current]"});
    EXPECT_EQ(judged({event("kernel", "", EventSeverity::critical, "hardware",
                            "mce: [Hardware Error]: Uncorrected error")}),
              Lines{"critical event_processor:hardware | hardware | mce: [Hardware Error]: "
                    "Uncorrected error"});
}

// However the kernel tells of them.
TEST(Events, ASectorThatCannotBeReadIsAnErrorOfTheDisk) {
    for (const char* text :
         {"critical medium error, dev sda, sector 8 op 0x0:(READ)",
          "I/O error, dev sda, sector 8 op 0x0:(READ)", "sda: error: { UNC }",
          "sd 0:0:1:0: [sda] tag#12 Add. Sense: Unrecovered read error",
          "sda: Read(0x2) @ LBA 8, 8 blocks, Unrecovered Read Error (sct 0x2 / sc 0x81)"})
        EXPECT_EQ(judged({event("kernel", "", EventSeverity::critical, "sda", text)}),
                  Lines{"warning event_disk:sda | sda | " + std::string(text)});
}

TEST(Events, MemoryErrorsAreTheMemorysWhoeverTellsThem) {
    const auto at = [](EventSeverity severity, const char* text) {
        const auto told = judged({event("kernel", "", severity, "memory", text)});
        return told.empty() ? "" : told[0].substr(0, told[0].find(':'));
    };
    constexpr auto kBad = EventSeverity::critical;
    EXPECT_EQ(at(kBad, "{1}[Hardware Error]:   section_type: memory error"),
              "critical event_memory_error");
    EXPECT_EQ(at(EventSeverity::info, "{1}[Hardware Error]:   section_type: memory error"),
              "notice event_memory_corrected");
    EXPECT_EQ(at(kBad, "Memory failure: 0x1: recovery action for reserved page: Ignored"),
              "critical event_memory_error");
    EXPECT_EQ(at(kBad, "mce: Uncorrected hardware memory error in user-access at 3f1b2c0"),
              "critical event_memory_error");
    // Of what else the firmware reports nobody knows what failed.
    EXPECT_EQ(at(kBad, "{1}[Hardware Error]: event severity: fatal"), "critical event_critical");
    EXPECT_EQ(at(kBad, "{1}[Hardware Error]:   section_type: PCIe error"), "critical event_pci");
    EXPECT_EQ(at(kBad, "{1}[Hardware Error]:   section_type: general processor error"),
              "critical event_processor");
}

// That something is over is no news of a fault, and what came back is no loss.
TEST(Events, WhatIsOverIsNoFault) {
    const auto at = [](const char* subject, const char* text) {
        return event("bmc", "2026-11-20T12:00:00", EventSeverity::info, subject, text);
    };
    for (const char* text : {"Processor: IERR, Deasserted", "Processor: Thermal Trip, Deasserted",
                             "Memory: Uncorrectable ECC, Deasserted",
                             "Memory: Correctable ECC logging limit reached, Deasserted"})
        EXPECT_EQ(judged({at("X", text)}), Lines{}) << text;
    EXPECT_EQ(judged({at("DIMM A1", "Memory: Uncorrectable ECC, Asserted"),
                      at("DIMM A1", "Memory: Uncorrectable ECC, Deasserted")}),
              Lines{"critical event_memory_error:DIMM_A1 | DIMM A1 | Memory: Uncorrectable ECC, "
                    "Asserted"});
    EXPECT_EQ(judged({at("HDD3", "Drive Fault, Asserted"), at("HDD3", "Drive Fault, Deasserted")}),
              Lines{"notice event_drive:HDD3 | HDD3 | Drive Fault, Deasserted"});
    const auto lost = at("PS Red", "Power Unit: Redundancy Lost, Asserted");
    const auto regained = at("PS Red", "Power Unit: Fully Redundant, Asserted");
    EXPECT_EQ(judged({lost, regained}),
              Lines{"notice event_redundancy:PS_Red | PS Red | Power Unit: Fully Redundant, "
                    "Asserted"});
    // The evidence is what ended it, and what it was.
    EventJudge judge;
    auto first = lost, last_one = regained;
    first.place = {"selinfo.txt", 4};
    last_one.place = {"selinfo.txt", 9};
    judge.take(first);
    judge.take(last_one);
    Collector findings;
    judge.finish({}, kNow, findings);
    const auto found = findings.take();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].evidence, (std::vector<inventory::Place>{last_one.place, first.place}));
    for (const auto& last : {lost, at("Fan Red", "Fully Redundant, Asserted"),
                             at("PS Red", "Power Unit: Fully Redundant, Deasserted")})
        EXPECT_TRUE(judged({lost, last})[0].starts_with("warning event_redundancy:PS_Red"));
}

TEST(Events, CorrectedErrorsCountByDayAndModule) {
    std::vector<Event> events(
        24, event("bmc", "2026-11-20T12:00:00", EventSeverity::info, "DIMM A1", "Correctable ECC"));
    EXPECT_EQ(judged(events),
              Lines{"notice event_memory_corrected:DIMM_A1 | DIMM A1 | Correctable ECC"});
    events.push_back(
        event("bmc", "2026-11-21T12:00:00", EventSeverity::info, "DIMM A1", "Correctable ECC"));
    EXPECT_EQ(judged(events),
              Lines{"notice event_memory_corrected:DIMM_A1 | DIMM A1 | Correctable ECC"});
    events.insert(events.begin(), event("bmc", "2026-11-20T12:00:00", EventSeverity::info,
                                        "DIMM A1", "Correctable ECC"));
    EXPECT_EQ(judged(events),
              Lines{"warning event_memory_many:DIMM_A1 | DIMM A1 | Correctable ECC"});
}

TEST(Events, WhatTheSensorSaysNowDecides) {
    inventory::Inventory inventory;
    inventory::Sensor well;
    well.name = "CPU1 Temp";
    well.reading = 40;
    well.status = "ok";
    inventory.sensors = {well};
    const std::vector<Event> crossed{event("bmc", "2026-11-20T12:00:00", EventSeverity::warning,
                                           "CPU1 Temp", "Upper Critical going high | Asserted")};
    EXPECT_EQ(
        judged(crossed, inventory),
        Lines{
            "notice event_threshold_past:CPU1_Temp | CPU1 Temp | Upper Critical going high | Asserted"});
    EXPECT_EQ(
        judged(crossed),
        Lines{
            "warning event_threshold:CPU1_Temp | CPU1 Temp | Upper Critical going high | Asserted"});
}

TEST(Events, ADeassertionEndsIt) {
    EXPECT_EQ(judged({event("bmc", "2026-11-20T12:00:00", EventSeverity::warning, "T",
                            "Upper Critical going high | Asserted"),
                      event("bmc", "2026-11-20T13:00:00", EventSeverity::info, "T",
                            "Upper Critical going high | Deasserted")}),
              Lines{"notice event_threshold_past:T | T | Upper Critical going high | Deasserted"});
}

TEST(Events, AClearedLogIsNothing) {
    EXPECT_EQ(judged({event("bmc", "2026-11-20T12:00:00", EventSeverity::warning, "SEL",
                            "Log area reset/cleared | Asserted")}),
              Lines{});
}

TEST(Events, AControllersOwnLogByItsClass) {
    const auto at = [](const char* time) {
        return event("controller 1", time, EventSeverity::critical, "", "Cache was discarded");
    };
    EXPECT_EQ(judged({event("controller 1", "2026-11-20T12:00:00", EventSeverity::info, "",
                            "Patrol Read started"),
                      at("2026-11-20T12:00:00")}),
              Lines{"warning event_controller:controller_1 | controller 1 | Cache was discarded"});
    EXPECT_EQ(judged({at("2026-10-20T12:00:00")}),
              Lines{"notice event_controller:controller_1 | controller 1 | Cache was discarded"});
}

// How a drive or volume is now, its state says.
TEST(Events, WhatAControllerLoggedOfAVolumeIsPast) {
    EXPECT_EQ(judged({event("controller 1", "2026-11-20T12:00:00", EventSeverity::critical,
                            "VD 00/0", "VD 00/0 is now OFFLINE")}),
              Lines{"notice event_controller_drive:VD_00_0 | VD 00/0 | VD 00/0 is now OFFLINE"});
}

// ipmiutil names sensors by type and number, and thresholds in its own words.
TEST(Events, TheSensorOfANumberDecides) {
    inventory::Inventory inventory;
    inventory::Sensor fan;
    fan.name = "FAN4";
    fan.number = "1Fh";
    fan.reading = 5000;
    fan.status = "ok";
    inventory.sensors = {fan};
    const std::vector<Event> crossed{event("bmc", "2026-11-20T12:00:00", EventSeverity::critical,
                                           "Fan #1f", "Fan: Lo Crit thresh act=04 thr=06")};
    EXPECT_EQ(
        judged(crossed, inventory),
        Lines{"notice event_threshold_past:Fan__1f | Fan #1f | Fan: Lo Crit thresh act=04 thr=06"});
    EXPECT_EQ(
        judged(crossed),
        Lines{"warning event_threshold:Fan__1f | Fan #1f | Fan: Lo Crit thresh act=04 thr=06"});
}

TEST(Events, TheSameOfTheSameIsCounted) {
    EventJudge judge;
    for (int i = 0; i < 3; ++i) {
        auto one = event("kernel", "", EventSeverity::warning, "sda",
                         "blk_update_request: I/O error, dev sda");
        one.place.line = 10 + i;
        judge.take(one);
    }
    Collector findings;
    judge.finish({}, kNow, findings);
    const auto all = findings.take();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].count, 3);
    EXPECT_EQ(all[0].evidence, (std::vector<Place>{{"selinfo.txt", 12}, {"selinfo.txt", 10}}));
}

}  // namespace
}  // namespace qvhost::findings
