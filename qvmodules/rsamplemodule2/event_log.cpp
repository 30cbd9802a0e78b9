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
#include "run/process.h"

namespace marlox::repository {

char total_buff[2048] = {};
int flag_data = 0;

namespace {

using capture::contains;
using capture::Key;
using capture::Record;
using capture::Skip;
using sample2::unit;

// storcli /c0 show events: after a head of a few lines one block an event,
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
// and a summary that begins with "Controller = 0". One blank behind each colon is no value.
// An event from before the clock was set carries the seconds since then in place of the time.
constexpr auto kEvent = std::to_array<Key>({
    {"seqNum:",                    "seqNum",           "seqNum",            Skip{1}},
    {"Seconds since last reboot:", "Time",             "Time",              Skip{1}},
    {"Time:",                      "Time",             "Time",              Skip{1}},
    {"Code:",                      "Code",             "Code",              Skip{1}},
    {"Class:",                     "Class",            "Class",             Skip{1}},
    {"Locale:",                    "Locale",           "Locale",            Skip{1}},
    {"Event Description:",         "EventDescription", "Event Description", Skip{1}},
});
static_assert(capture::well_formed(kEvent, "EventDescription") && capture::end_alike(kEvent));

constexpr std::size_t kSequence = 0;  // the row that begins an event

// The text below "Event Data:", which lives in the two globals. What does not fit is cut.
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

// The five tables, each with the record that is filled for its next row.
class Pages {
public:
    explicit Pages(RRepository& repository)
        : pages_{
              {{repository, RSampleModule2::T_EVENTLOG1_TABLE2, "LSI Controller 0 event log page1"},
               {repository, RSampleModule2::T_EVENTLOG2_TABLE2, "LSI Controller 0 event log page2"},
               {repository, RSampleModule2::T_EVENTLOG3_TABLE2, "LSI Controller 0 event log page3"},
               {repository, RSampleModule2::T_EVENTLOG4_TABLE2, "LSI Controller 0 event log page4"},
               {repository, RSampleModule2::T_EVENTLOG5_TABLE2,
                "LSI Controller 0 event log page5"}}
    } {
        for (Record& page : pages_) {
            page.set("seqNum", "seqNum", "");
            page.set("EventData", "Event Data", "");
            page.set("Time", "Time", "");
            page.set("Code", "Code", "");
            page.set("Class", "Class", "");
            page.set("Locale", "Locale", "");
            page.set("EventDescription", "Event Description", "");
        }
    }

    // A page takes 3000 events, the last one all that are left.
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
        if (line.size() == 1) return data_.add(line);  // every fourth line is blank, and no more

        const bool has_equals = line.find('=') != std::string_view::npos;  // most lines have none
        if (count_ != 0 && has_equals && contains(line, "Controller =")) {
            finish();
        } else if (const auto hit = capture::find_key_alike(kEvent, line)) {
            const auto value = capture::value_behind(*hit, line);
            if (hit->row == kSequence) {
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
    // A report's head is at most so long: the first event has none before it to finish. A head that
    // is longer gives a first row without values.
    static constexpr long kHeadLines = 13;

    Record& page() { return pages_.of(count_); }

    void finish() {
        page().set(data_name_, data_.text());
        page().add();
    }

    // The event is counted at once, so all its other lines belong to the page of the new count. The
    // one that fills a page is therefore a row of the next, and its number is set on both.
    void begin(std::string_view sequence) {
        Record& page_before = page();
        if (&page_before != &pages_.of(0) || lines_ > kHeadLines) finish();
        page_before.set(names_[kSequence], sequence);
        ++count_;
        if (&page() != &page_before) page().set(names_[kSequence], sequence);
    }

    const std::vector<capture::PropertyName> names_ = capture::names_of(kEvent);
    const capture::PropertyName data_name_{"EventData", "Event Data"};
    Pages pages_;
    EventData data_;
    long lines_ = 0;
    std::size_t count_ = 0;
};

}  // namespace

void event_log(RRepository& repository) {
    const auto command =
        sample2::tool_command("'{P}qv_tools/storcli_{x}' /c0 show events > '{L}raidevents.txt'");
    unit.progress("raidevent raw path:", command);
    capture::run(command);

    bool saw_any = false;
    {
        auto lines = capture::Lines::open(capture::log_dir() + "raidevents.txt");
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
    capture::run(convert);
}

}  // namespace marlox::repository
