#include <gtest/gtest.h>

#include "captures_beside.h"
#include "describe.h"
#include "inventory/storage/ircu.h"
#include "inventory/storage/storcli_events.h"

namespace qvhost::inventory {
namespace {

void read_events(CaptureLines& lines, Reading& reading) { read_storcli_events(lines, reading, 1); }

const std::string kEvents = R"(

seqNum: 0x00000101
Time: Sat Nov 21 04:05:06 2026

Code: 0x00000072
Class: 0
Locale: 0x02
Event Description: State change on PD 0d(e0xfc/s2) from ONLINE(18) to FAILED(11)
Event Data:
===========
Device ID: 13
Time: 1


seqNum: 0x00000102
Seconds since last reboot: 37
Code: 0x000000fb
Class: 2
Locale: 0x01
Event Description: VD 02/2 is now DEGRADED
Event Data:
===========
None
seqNum: 0x00000103
Time: Thu Jan  1 00:00:37 1970
Code: 0x00000067
Class: -1
Locale: 0x02
Event Description: Rebuild progress on PD 0c(e0xfc/s4) is 13.04%(811s)
Event Data:
===========
None
seqNum: 0x00000104
Time: Sun Nov 22 04:05:06 2026
Class: 1
Event Description: Patrol Read paused
seqNum: 0x00000105
Time: Sun Nov 22 04:05:07 2026
Class: 3
Event Description: Fatal firmware error: Line 1
Event Data:
===========
None


Controller = 1
Status = Success
Description = None
)";

TEST(StorcliEvents, are_read) {
    const auto read = read_text(read_events, kEvents);
    EXPECT_EQ(describe(read.events),
              "9 controller 1 2026-11-21T04:05:06 info [PD 0d(e0xfc/s2)] State change on PD "
              "0d(e0xfc/s2) from ONLINE(18) to FAILED(11)\n"
              "21 controller 1 - critical [VD 02/2] VD 02/2 is now DEGRADED\n"
              "30 controller 1 - info [PD 0c(e0xfc/s4)] Rebuild progress on PD 0c(e0xfc/s4) is "
              "13.04%(811s)\n"
              "37 controller 1 2026-11-22T04:05:06 warning [] Patrol Read paused\n"
              "41 controller 1 2026-11-22T04:05:07 critical [] Fatal firmware error: Line 1\n");
    EXPECT_EQ(describe(read.how), "49 lines\n");
}

TEST(StorcliEvents, are_those_of_the_controller_that_the_text_names) {
    const auto head = read_text(read_events, "Controller = 3\nStatus = Success\n" + kEvents);
    EXPECT_EQ(head.events.front().source, "controller 3");
    auto contradicted = kEvents;
    contradicted.replace(contradicted.find("Controller = 1"), 14, "Controller = 2");
    const auto read = read_text(read_events, contradicted);
    EXPECT_EQ(describe(read.how), "49 lines\ngap 47: the events are those of controller 2\n");
}

TEST(StorcliEvents, say_what_is_missing) {
    struct Case {
        const char* text;
        std::size_t events;
        const char* how;
    };
    const Case cases[] = {
        {"", 0, "0 lines\ngap 0: the log has no end\n"},
        {"Controller = 1\nStatus = Failure\nDescription = Un-supported command\n", 0,
         "3 lines\nerror 2: Un-supported command\n"},
        {"storcli: not found\n", 0, "1 lines, 1 not understood (1)\ngap 1: the log has no end\n"},
        {"seqNum: 1\nTime: Sat Nov 21 04:05:06 2026\nClass: 0\n", 0,
         "3 lines\ngap 3: an event that is cut off\ngap 3: the log has no end\n"},
        {"seqNum: 1\nClass: 0\nEvent Description: Batt", 0,
         "3 lines\ngap 3: an event that is cut off\ngap 3: the log has no end\n"},
        {"seqNum: 1\nClass: 9\nEvent Description: A\nStatus = Success\n", 1,
         "4 lines, 1 not understood (2)\n"},
        {"seqNum: 1\nTime: yesterday\nClass: 0\nEvent Description: A\nStatus = Success\n", 1,
         "5 lines, 1 not understood (2)\n"},
        {"seqNum: 1\nClass: 0\nseqNum: 2\nEvent Description: A\nStatus = Success\n", 1,
         "5 lines\ngap 3: an event without its description\n"},
    };
    for (const auto& c : cases) {
        const auto read = read_text(read_events, c.text);
        EXPECT_EQ(read.events.size(), c.events) << c.text;
        EXPECT_EQ(describe(read.how), c.how) << c.text;
    }
}

TEST(StorcliEvents, a_text_that_lost_events_is_not_whole) {
    const auto all = describe(read_text(read_events, kEvents).events);
    for (std::size_t size = 0; size < kEvents.size(); ++size) {
        const auto read = read_text(read_events, kEvents.substr(0, size));
        if (read.how.whole()) {
            EXPECT_EQ(describe(read.events), all) << "cut at byte " << size;
        }
    }
}

TEST(StorcliEvents, end_tells_the_controller) {
    const auto end = storcli_events_end(kEvents.substr(kEvents.size() - 100));
    EXPECT_EQ(end.controller, 1);
    EXPECT_TRUE(end.is_whole);
    EXPECT_FALSE(storcli_events_end(kEvents.substr(0, 200)).is_whole);
}

TEST(StorcliEvents, counts_agree_with_captures) {
    for (const auto& [name, text] : captures_of("storcli")) {
        if (!name.starts_with("events-")) continue;
        std::size_t count = 0;
        for (auto at = text.find("Event Description:"); at != std::string::npos;
             at = text.find("Event Description:", at + 1))
            ++count;
        EXPECT_EQ(read_text(read_events, text).events.size(), count) << name;
    }
}

TEST(StorcliTermlog, is_known_and_gives_no_events) {
    const auto read =
        read_text(read_storcli_termlog,
                  "Firmware Term Log Information on controller 0:\nT10: C0:PD 0c rebuild\n\n"
                  "Controller = 0\nStatus = Success\nDescription = None\n");
    EXPECT_EQ(describe(read.how), "6 lines\n");
    EXPECT_EQ(
        describe(read_text(read_storcli_termlog, "Status = Failure\nDescription = None\n").how),
        "2 lines\nerror 1: Failure\n");
    EXPECT_FALSE(read_text(read_storcli_termlog, "Segmentation fault\n").how.whole());
}

const std::string kIrLog = R"(SAS2IR_linux: integrated RAID log decoder, version 1.04
Input: logir.log, 2 records

Log Entry 1
Time: 03/02/2026 04:12:07
LogSequence: 0x0041
LogEntryDescription: IR Physical Disk
LogDataDescription: PhysDisk 1 in Encl 1 Slot 1 state changed to Missing
LogClass: Warning
Locale: 0x0002

Log Entry 2
Time: 03/02/1970 06:12:09
LogEntryDescription: IR Volume
LogDataDescription: Volume 286 state changed from Optimal to Degraded
LogClass: Critical
Locale: 0x0004
)";

TEST(IrLog, is_read) {
    const auto read = read_text(read_ir_log, kIrLog);
    EXPECT_EQ(describe(read.events),
              "8 controller 0 2026-03-02T04:12:07 warning [IR Physical Disk] PhysDisk 1 in Encl 1 "
              "Slot 1 state changed to Missing\n"
              "15 controller 0 - critical [IR Volume] Volume 286 state changed from Optimal to "
              "Degraded\n");
    EXPECT_EQ(describe(read.how), "17 lines\n");
    for (std::size_t size = 0; size < kIrLog.size(); ++size) {
        const auto cut = read_text(read_ir_log, kIrLog.substr(0, size));
        if (cut.how.whole()) {
            EXPECT_EQ(describe(cut.events), describe(read.events)) << "cut at byte " << size;
        }
    }
}

}  // namespace
}  // namespace qvhost::inventory
