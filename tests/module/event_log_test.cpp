#include <algorithm>
#include <cstring>

#include "bench.h"
#include "rsamplemodule2/captures.h"

using namespace marlox::repository;

namespace {

class EventLog : public Bench {
protected:
    EventLog() { vendor_tool("eventslog_convert_x64", "echo converted"); }

    // The records of a report, one a line.
    std::vector<std::string> rows(const std::string& report) {
        vendor_tool("storcli_x64", prints(report));
        fakehost::min_log_level = 2;
        event_log(fakehost::repository());
        std::vector<std::string> rows;
        for (const auto& note : fakehost::notes) {
            if (note.starts_with("add ")) rows.push_back(note);
        }
        fakehost::notes.clear();
        return rows;
    }
    std::string only_row(const std::string& report) {
        const auto found = rows(report);
        EXPECT_EQ(found.size(), 1u);
        return found.empty() ? "" : found[0];
    }
};

std::string row(int page, const std::string& seq, const std::string& data,
                const std::string& time = "", const std::string& code = "",
                const std::string& event_class = "", const std::string& locale = "",
                const std::string& description = "") {
    const auto number = std::to_string(page);
    return "add EVENTLOG" + number + " \"LSI Controller 0 event log page" + number +
           "\" -1: seqNum \"seqNum\"=\"" + seq + "\", EventData \"Event Data\"=\"" + data +
           "\", Time \"Time\"=\"" + time + "\", Code \"Code\"=\"" + code +
           "\", Class \"Class\"=\"" + event_class + "\", Locale \"Locale\"=\"" + locale +
           "\", EventDescription \"Event Description\"=\"" + description + "\"";
}

const std::string kEnd = "Controller = 0\n";

TEST_F(EventLog, InFull) {
    vendor_tool("storcli_x64",
                prints("seqNum: 0x1\nTime: now\n\nCode: 0x2\nClass: 3\nLocale: 0x4\n"
                       "Event Description: text\nEvent Data:\n=======\nDevice ID: 5\n\n" +
                       kEnd + "Status = Success\n"));
    event_log(fakehost::repository());
    const std::string unit = "qvmodules/rsamplemodule2: [repo] ";
    const std::string capture = "'P/qv_tools/storcli_x64' /c0 show events > 'L/raidevents.txt'\n";
    const std::string convert =
        "'P/qv_tools/eventslog_convert_x64' 'L/raidevents.txt' > 'L/eventslog_convert.txt'\n";
    EXPECT_EQ(noted(), "log 3 " + unit + "raidevent raw path:" + capture + "$ " + capture +
                           row(1, "0x1\\n", "Device ID: 5\\n\\n", "now\\n", "0x2\\n", "3\\n",
                               "0x4\\n", "text\\n") +
                           "\nlog 4 " + unit + "eventslog_convert raw path:" + convert + "$ " +
                           convert);
    EXPECT_EQ(log_file("eventslog_convert.txt"), "converted\n");
}

TEST_F(EventLog, PagesAreShiftedByOneEvent) {
    struct Case {
        int events;
        std::vector<int> on_pages;
    };
    const Case cases[] = {
        {1, {1, 0, 0, 0, 0}},
        {2999, {2999, 0, 0, 0, 0}},
        {3000, {2999, 1, 0, 0, 0}},
        {3001, {2999, 2, 0, 0, 0}},
        {6000, {2999, 3000, 1, 0, 0}},
        {9000, {2999, 3000, 3000, 1, 0}},
        {12000, {2999, 3000, 3000, 3000, 1}},
        {12001, {2999, 3000, 3000, 3000, 2}},
        {20000, {2999, 3000, 3000, 3000, 8001}},
    };
    for (const auto& [events, on_pages] : cases) {
        std::string report(13, '\n');  // the next line is the 14th
        report.pop_back();
        for (int i = 0; i < events; ++i)
            report +=
                "seqNum: " + std::to_string(i) + "\n======\n=======\n" + std::to_string(i) + "\n";
        const auto found = rows(report + kEnd);
        ASSERT_EQ(found.size(), static_cast<std::size_t>(events));
        std::vector<int> counts(5);
        for (std::size_t i = 0; i < found.size(); ++i) {
            const auto page = found[i][std::strlen("add EVENTLOG")] - '0';
            ++counts[static_cast<std::size_t>(page - 1)];
            const auto number = std::to_string(i);
            EXPECT_EQ(found[i], row(page, number + "\\n", number + "\\n"));
        }
        EXPECT_EQ(counts, on_pages) << events;
    }
}

TEST_F(EventLog, ALongHeadGivesAFirstRowWithoutValues) {
    const auto head = [](int lines) {
        std::string text;
        for (int i = 1; i <= lines; ++i) text += "h" + std::to_string(i) + "\n";
        return text;
    };
    EXPECT_EQ(rows(head(12) + "seqNum: 1\n=======\n" + kEnd),
              (std::vector<std::string>{row(1, "1\\n", "")}));
    const auto found = rows(head(13) + "seqNum: 1\n=======\n" + kEnd);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0],
              row(1, "", "h1\\nh2\\nh3\\nh4\\nh5\\nh6\\nh7\\nh8\\nh9\\nh10\\nh11\\nh12\\nh13\\n"));
    EXPECT_EQ(found[1], row(1, "1\\n", ""));
}

TEST_F(EventLog, ShortEventsAtTheTopAreLost) {
    // The second number comes on line 3, before the fourteenth.
    EXPECT_EQ(rows("seqNum: 1\nCode: 1\nseqNum: 2\n" + kEnd),
              (std::vector<std::string>{row(1, "2\\n", "", "", "1\\n")}));
}

TEST_F(EventLog, WithoutAnEndTheLastEventIsLost) {
    EXPECT_EQ(rows("seqNum: 1\nCode: 1\n"), std::vector<std::string>());
    EXPECT_EQ(log_file("eventslog_convert.txt"), "converted\n");  // a number was seen all the same
}

TEST_F(EventLog, NothingToConvertWithoutANumber) {
    EXPECT_EQ(rows("Controller = 0\nStatus = Failure\n"), std::vector<std::string>());
    EXPECT_EQ(log_file("eventslog_convert.txt"), "(none)");
    EXPECT_STREQ(total_buff, "Controller = 0\nStatus = Failure\n");
}

TEST_F(EventLog, EveryFurtherEndAddsTheRowAgain) {
    EXPECT_EQ(rows("seqNum: 1\n=======\n" + kEnd + "x\n" + kEnd),
              (std::vector<std::string>{row(1, "1\\n", ""), row(1, "1\\n", "x\\n")}));
    // The end is looked for before the number.
    EXPECT_EQ(rows("seqNum: 1\n=======\nController = 0 seqNum: 2\n"),
              (std::vector<std::string>{row(1, "1\\n", "")}));
}

TEST_F(EventLog, SecondsSinceTheRebootAreATime) {
    EXPECT_EQ(only_row("seqNum: 1\n=======\nTime: a\nSeconds since last reboot: 5\n" + kEnd),
              row(1, "1\\n", "", "5\\n"));
    EXPECT_EQ(only_row("seqNum: 1\n=======\nSeconds since last reboot: 5\nTime: a\n" + kEnd),
              row(1, "1\\n", "", "a\\n"));
}

TEST_F(EventLog, DataThatLooksLikeAKeyIsOne) {
    EXPECT_EQ(only_row("seqNum: 1\n=======\na\nPrevious Code: 7\nb Class: 8\nx Event Data: y\nc\n" +
                       kEnd),
              row(1, "1\\n", "a\\nc\\n", "", "7\\n", "8\\n"));
}

TEST_F(EventLog, DataIsClearedByItsRuleAlone) {
    const std::string head(12, '\n');
    const auto found = rows(head + "seqNum: 1\n=======\na\nseqNum: 2\nb\n" + kEnd);
    EXPECT_EQ(found,
              (std::vector<std::string>{row(1, "1\\n", "a\\n"), row(1, "2\\n", "a\\nb\\n")}));
    // It is still there for the next call.
    EXPECT_EQ(only_row("seqNum: 3\n" + kEnd), row(1, "3\\n", "a\\nb\\n"));
}

TEST_F(EventLog, DataFillsItsBufferAndNoMore) {
    const std::string line = std::string(99, 'd') + "\n";
    std::string report = "seqNum: 1\n=======\n";
    std::string data;
    for (int i = 0; i < 30; ++i) {
        report += line;
        data += line;
    }
    EXPECT_EQ(only_row(report + kEnd), row(1, "1\\n", fakehost::escaped(data.substr(0, 2047))));
    EXPECT_EQ(total_buff[2047], '\0');
}

TEST_F(EventLog, AMarkFromOutsideClearsTheText) {
    std::strcpy(total_buff, "old");
    flag_data = 1;
    EXPECT_EQ(only_row("seqNum: 1\nfirst\nsecond\n" + kEnd), row(1, "1\\n", "second\\n"));
    EXPECT_EQ(flag_data, 0);
}

TEST_F(EventLog, StaleValuesStay) {
    const std::string head(12, '\n');
    EXPECT_EQ(rows(head + "seqNum: 1\nTime: a\n=======\nseqNum: 2\n" + kEnd),
              (std::vector<std::string>{row(1, "1\\n", "", "a\\n"), row(1, "2\\n", "", "a\\n")}));
}

TEST_F(EventLog, LongLinesAreCutByTheReader) {
    const auto value = std::string(600, 'v');
    EXPECT_EQ(
        only_row("seqNum: 1\n=======\nEvent Description: " + value + "\n" + kEnd),
        row(1, "1\\n", std::string(600 - 492, 'v') + "\\n", "", "", "", "", std::string(492, 'v')));
    // Keys at the end of a line have no value.
    EXPECT_EQ(only_row("seqNum:\n=======\nCode:\nClass: 1\n" + kEnd),
              row(1, "", "", "", "", "1\\n"));
}

TEST_F(EventLog, CarriageReturnsAndNulsStay) {
    EXPECT_EQ(only_row("seqNum: 1\r\n=======\r\nCode: 2\r\n" + kEnd),
              row(1, "1\\r\\n", "", "", "2\\r\\n"));
    EXPECT_EQ(only_row("seqNum: 1\n=======\nCode: 2" + std::string(1, '\0') + "3\n" + kEnd),
              row(1, "1\\n", "", "", "2"));
}

TEST_F(EventLog, NoCommandButTheCaptureWithoutAFile) {
    vendor_tool("storcli_x64", "rm -f '" + log_dir + "raidevents.txt'");
    event_log(fakehost::repository());
    EXPECT_EQ(noted({"$", "log 4", "add"}),
              "$ 'P/qv_tools/storcli_x64' /c0 show events > 'L/raidevents.txt'\n"
              "log 4 qvmodules/rsamplemodule2: [repo] Failed to open raid log file\n");
}

}  // namespace
