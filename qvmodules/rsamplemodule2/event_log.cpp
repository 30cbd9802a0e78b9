#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "file/keys.h"
#include "file/record.h"
#include "read/lines.h"
#include "read/text.h"
#include "rsamplemodule2/captures.h"
#include "rsamplemodule2/command.h"
#include "rsamplemodule2/rsamplemodule2.h"
#include "rsamplemodule2/unit.h"
#include "runner/process.h"

namespace marlox::repository {

char total_buff[2048] = {};
int flag_data = 0;

namespace {

using capture::contains;
using capture::Key;
using capture::Record;
using capture::Skip;
using sample2::unit;

// storcli /c0 show events prints a head of a few lines, one block for each event,
//     seqNum: 0x00000f3e
//     Time: Sat Nov 21 04:05:06 2026
//
//     Code: 0x00000072
//     Class: 0
//     Locale: 0x02
//     Event Description: State change on PD 0d(e0xfc/s2) from ONLINE(18) to FAILED(11)
//     Event Data:
//     ===========
//     Device ID: 13
//     ...
// and a summary that begins with "Controller = 0". The blank behind a colon is not part of the value.
// An event from before the clock was set has "Seconds since last reboot:" in place of "Time:".

// Indices of kColumns.
enum ColumnIndex : std::size_t { kSequence, kTime, kCode, kClass, kLocale, kDescription, kData };

constexpr auto kColumns = std::to_array<capture::Column>({
    {"seqNum",           "seqNum",            "number of the event, in hexadecimal",               4 },
    {"Time",             "Time",              "the controller's clock, or seconds since it began", 5 },
    {"Code",             "Code",              "kind of the event, in hexadecimal",                 5 },
    {"Class",            "Class",             "severity: -1 debug to 4 dead",                      4 },
    {"Locale",           "Locale",            "what the event concerns, in hexadecimal",           4 },
    {"EventDescription", "Event Description", "the event in words",                                12},
    {"EventData",        "Event Data",        "details, as many lines as there are",               12},
});

constexpr auto kEvent = std::to_array<Key>({
    {"seqNum:",                    kColumns[kSequence],    Skip{1}},
    {"Seconds since last reboot:", kColumns[kTime],        Skip{1}},
    {"Time:",                      kColumns[kTime],        Skip{1}},
    {"Code:",                      kColumns[kCode],        Skip{1}},
    {"Class:",                     kColumns[kClass],       Skip{1}},
    {"Locale:",                    kColumns[kLocale],      Skip{1}},
    {"Event Description:",         kColumns[kDescription], Skip{1}},
});
static_assert(capture::well_formed(kEvent) && capture::end_alike(kEvent));

constexpr std::size_t kBegin = 0;  // the index in kEvent of the key that begins an event

consteval capture::Table page(const char* id, const char* title) {
    return {
        .id = id,
        .title = title,
        .row = "A row is an event in the log of MegaRAID controller 0.",
        .source = {.tool = "storcli",
                   .command = "'{P}qv_tools/storcli_{x}' /c0 show events > '{L}raidevents.txt'",
                   .capture = "raidevents.txt"},
        .layout = capture::header_row(5),
        .columns = kColumns,
    };
}

}  // namespace

constexpr std::array<capture::Table, 5> kEventLog = {
    page("EVENTLOG1", "LSI Controller 0 event log page1"),
    page("EVENTLOG2", "LSI Controller 0 event log page2"),
    page("EVENTLOG3", "LSI Controller 0 event log page3"),
    page("EVENTLOG4", "LSI Controller 0 event log page4"),
    page("EVENTLOG5", "LSI Controller 0 event log page5"),
};
static_assert(capture::well_formed(kEventLog[0]));

namespace {

// The text below "Event Data:". It is kept in the two exported globals; the rest of a longer text is
// dropped.
class EventData {
public:
    EventData() : size_(strnlen(total_buff, kMost)) {}

    void start_anew() {
        clear();
        flag_data = 1;
        flag_data = 0;
    }

    void add(std::string_view line) {
        if (flag_data == 1) {
            clear();
        } else {
            const auto fits = std::min(line.size(), kMost - size_);
            std::memcpy(total_buff + size_, line.data(), fits);
            size_ += fits;
            total_buff[size_] = '\0';
        }
        flag_data = 0;
    }

    std::string_view text() const { return {total_buff, size_}; }

private:
    static constexpr std::size_t kMost = sizeof total_buff - 1;

    void clear() {
        std::memset(total_buff, 0, size_);
        size_ = 0;
    }

    std::size_t size_;
};

// The five tables, each with the record that holds its next row.
class Pages {
public:
    explicit Pages(RRepository& repository)
        : pages_{
              {{repository, kEventLog[0]},
               {repository, kEventLog[1]},
               {repository, kEventLog[2]},
               {repository, kEventLog[3]},
               {repository, kEventLog[4]}}
    } {
        // In records the data comes second, in the layout last.
        for (Record& page : pages_) {
            for (const ColumnIndex index :
                 {kSequence, kData, kTime, kCode, kClass, kLocale, kDescription})
                page.set(kColumns[index], "");
        }
    }

    // A page takes 3000 events, the last page all others.
    Record& of(std::size_t event_count) {
        return pages_[std::min(event_count / 3000, pages_.size() - 1)];
    }

private:
    std::array<Record, 5> pages_;
};

class EventReader {
public:
    explicit EventReader(RRepository& repository) : pages_(repository) {}

    bool saw_any() const { return count_ > 0; }

    void read(std::string_view line) {
        ++lines_;
        if (line.size() == 1) return data_.add(line);  // blank lines are frequent: test them first

        const bool has_equals =
            line.find('=') !=
            std::string_view::npos;  // most lines have none: one search for both texts
        if (count_ != 0 && has_equals && contains(line, "Controller =")) {
            finish();
        } else if (const auto hit = capture::find_key_alike(kEvent, line)) {
            const auto value = capture::value_behind(*hit, line);
            if (hit->row == kBegin) {
                begin(value);
            } else {
                page().set(names_[hit->row], value);
            }
        } else if (contains(line, "Event Data:")) {
            // the heading of the text that follows
        } else if (has_equals && contains(line, "=======")) {
            data_.start_anew();
        } else {
            data_.add(line);
        }
    }

private:
    // The first event follows a head of at most so many lines and has no event before it to file. If
    // the head is longer, a first row without values is filed.
    static constexpr long kHeadLines = 13;

    Record& page() { return pages_.of(count_); }

    void finish() {
        page().set(data_name_, data_.text());
        page().add();
    }

    // The event is counted here, so its other lines go to the page of the new count. The event that
    // fills a page therefore becomes a row of the next page, and its number is set on both pages.
    void begin(std::string_view sequence) {
        Record& page_before = page();
        if (&page_before != &pages_.of(0) || lines_ > kHeadLines) finish();
        page_before.set(names_[kBegin], sequence);
        ++count_;
        if (&page() != &page_before) page().set(names_[kBegin], sequence);
    }

    const std::vector<capture::PropertyName> names_ = capture::names_of(kEvent);
    const capture::PropertyName data_name_{kColumns[kData]};
    Pages pages_;
    EventData data_;
    long lines_ = 0;
    std::size_t count_ = 0;
};

}  // namespace

void event_log(RRepository& repository) {
    const auto& source = kEventLog[0].source;
    const auto command = sample2::tool_command(source.command);
    unit.progress("raidevent raw path:", command);
    runner::run(command);

    bool saw_any = false;
    {
        auto lines = capture::Lines::open(capture::log_path(source.capture));
        if (!lines) {
            unit.detail("Failed to open raid log file");
            return;
        }
        EventReader reader(repository);
        while (const auto line = lines->next()) reader.read(*line);
        saw_any = reader.saw_any();
    }
    if (!saw_any) return;

    const auto convert = sample2::tool_command(
        "'{P}qv_tools/eventslog_convert_{x}' '{L}raidevents.txt' > '{L}eventslog_convert.txt'");
    unit.detail("eventslog_convert raw path:", convert);
    runner::run(convert);
}

}  // namespace marlox::repository
