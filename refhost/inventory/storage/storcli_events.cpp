#include "inventory/storage/storcli_events.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <utility>

#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

// A block an event; newer builds put blank lines between:
//     seqNum: 0x00000f3e
//     Time: Sat Nov 21 04:05:06 2026
//     Code: 0x00000072
//     Class: 0
//     Locale: 0x02
//     Event Description: State change on PD 0d(e0xfc/s2) from ONLINE(18) to FAILED(11)
//     Event Data:
//     ===========
//     Device ID: 13
//     Enclosure Index: 252
//     Slot Number: 2
// In place of the time an event from before the clock was set has "Seconds since last reboot: 37".
// Behind the last block, or before the first, stands whose events they are:
//     Controller = 0
//     Status = Success
//     Description = None
struct ClassRow {
    std::string_view number;
    Severity severity;
    std::string_view meaning;
};
constexpr auto kClasses = std::to_array<ClassRow>({
    {"-1", Severity::info,     "progress"   },
    {"0",  Severity::info,     "information"},
    {"1",  Severity::warning,  "warning"    },
    {"2",  Severity::critical, "critical"   },
    {"3",  Severity::critical, "fatal"      },
    {"4",  Severity::critical, "dead"       },
});

// The value behind the key; nothing if the line does not begin with it.
std::optional<std::string_view> value_of(std::string_view line, std::string_view key) {
    if (!line.starts_with(key)) return std::nullopt;
    return trimmed(line.substr(key.size()));
}

// The next word, which is cut off the text.
std::string_view next_word(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const auto word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

int number_of(std::string_view word) {
    int number = -1;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && end == word.data() + word.size() ? number : -1;
}

// "Sat Nov 21 04:05:06 2026"
std::optional<Text> time_of(std::string_view value) {
    next_word(value);
    const int month = month_number(next_word(value));
    const int day = number_of(next_word(value));
    const auto clock = next_word(value);
    const int year = number_of(next_word(value));
    if (month == 0 || day < 0 || year < 0 || clock.size() != 8 || clock[2] != ':' ||
        clock[5] != ':')
        return std::nullopt;
    return iso_time(year, month, day, number_of(clock.substr(0, 2)), number_of(clock.substr(3, 2)),
                    number_of(clock.substr(6, 2)));
}

// What an event is about: "PD 0d(e0xfc/s2)", "VD 00/0", as it is called in the text.
std::optional<std::string_view> subject_in(std::string_view text) {
    for (std::size_t at = text.find("D "); at != npos; at = text.find("D ", at + 1)) {
        if (at == 0 || (text[at - 1] != 'P' && text[at - 1] != 'V')) continue;
        if (at >= 2 && text[at - 2] != ' ' && text[at - 2] != '(') continue;
        const auto number = at + 2;
        auto end = std::min(text.find_first_not_of("0123456789abcdefABCDEF", number), text.size());
        if (end == number || end == text.size()) continue;
        if (text[at - 1] == 'P' && text[end] == '(') {
            end = text.find(')', end);
            if (end == npos) return std::nullopt;
            return text.substr(at - 1, end + 1 - (at - 1));
        }
        if (text[at - 1] == 'V' && text[end] == '/') {
            end = std::min(text.find_first_not_of("0123456789", end + 1), text.size());
            return text.substr(at - 1, end - (at - 1));
        }
    }
    return std::nullopt;
}

// "Controller = 0", "Status = Failure", "Description = Un-supported command"
class Answer {
public:
    // Whether the line was one of it.
    bool read(std::string_view line, std::int64_t number) {
        const auto pair = key_value(line, " = ");
        if (!pair) return false;
        if (pair->key == "Controller") {
            controller = integer(pair->value);
        } else if (pair->key == "Status") {
            has_status = true;
            if (!pair->value.starts_with("Succ")) failed_line_ = number;
        } else if (pair->key == "Description") {
            description_ = pair->value;
        } else if (pair->key != "CLI Version" && pair->key != "Operating system") {
            return false;
        }
        return true;
    }

    void tell(Reading& reading) const {
        if (failed_line_ == 0) return;
        const bool is_told = !description_.empty() && description_ != "None";
        reading.how.errors.push_back({failed_line_, is_told ? description_ : "Failure"});
    }

    Integer controller;
    bool has_status = false;

private:
    std::int64_t failed_line_ = 0;
    std::string description_;
};

class EventsReader {
public:
    EventsReader(CaptureLines& lines, Reading& reading, Integer controller)
        : lines_(lines), reading_(reading), controller_(controller) {
        name_source();
    }

    void read() {
        std::int64_t last = 0;
        bool ended = true;
        while (const auto line = lines_.next()) {
            read(line->text, line->number);
            last = line->number;
            ended = line->ended;
        }
        if (open_ && (!has_text_ || (!ended && text_line_ == last)))
            gap(last, "an event that is cut off");
        else
            finish();
        if (!answer_.has_status) gap(last, "the log has no end");
        answer_.tell(reading_);
        reading_.how.lines = lines_.count();
    }

private:
    void gap(std::int64_t line, std::string words) {
        reading_.how.gaps.push_back({line, std::move(words)});
    }

    void name_source() {
        source_ = controller_ ? "controller " + std::to_string(*controller_) : "controller";
    }

    void read(std::string_view line, std::int64_t number) {
        if (line.empty()) return;
        switch (line.front()) {
            case 's':
                if (line.starts_with("seqNum:")) return begin();
                break;
            case 'T':
                if (const auto value = value_of(line, "Time:"); value && !in_data_) {
                    if (has_text_) begin();
                    open_ = true;
                    auto time = time_of(*value);
                    if (!time) reading_.how.unknown_line(number);
                    has_time_ = time && *time;
                    if (has_time_) event_.time = std::move(*time);
                    return;
                }
                break;
            case 'S':
                if (line.starts_with("Seconds since last reboot:") && !in_data_) {
                    if (has_text_) begin();
                    open_ = true;
                    return;
                }
                break;
            case 'C':
                if (const auto value = value_of(line, "Class:"); value && !in_data_)
                    return classify(*value, number);
                if (line.starts_with("Code:") && !in_data_) return;
                break;
            case 'L':
                if (line.starts_with("Locale:") && !in_data_) return;
                break;
            case 'E':
                if (const auto value = value_of(line, "Event Description:")) {
                    if (has_text_) begin();
                    open_ = has_text_ = true;
                    event_.text = *value;
                    text_line_ = number;
                    return;
                }
                if (line.starts_with("Event Data:")) {
                    in_data_ = true;
                    return;
                }
                break;
            default: break;
        }
        other(line, number);
    }

    // The head, the end, an event's data, or nothing of ours.
    void other(std::string_view line, std::int64_t number) {
        if (line.find(" = ") != npos && answer_.read(line, number)) {
            if (answer_.controller) check_controller(number);
            if (has_text_) finish();
            return;
        }
        if (!in_data_ && !trimmed(line).empty()) reading_.how.unknown_line(number);
    }

    void check_controller(std::int64_t number) {
        if (controller_ == answer_.controller) return;
        if (count_ == 0 && !has_text_) {
            controller_ = answer_.controller;
            name_source();
        } else if (!contradicted_) {
            contradicted_ = true;
            gap(number,
                "the events are those of controller " + std::to_string(*answer_.controller));
        }
    }

    void classify(std::string_view value, std::int64_t number) {
        open_ = true;
        for (const auto& row : kClasses) {
            if (row.number != value) continue;
            event_.severity = row.severity;
            return;
        }
        event_.severity = Severity::warning;  // it may matter
        reading_.how.unknown_line(number);
    }

    // The next event begins; the one before it is handed on.
    void begin() {
        if (open_ && !has_text_) gap(lines_.count(), "an event without its description");
        finish();
        open_ = true;
    }

    void finish() {
        if (has_text_) {
            ++count_;
            event_.place.capture = reading_.capture;
            event_.place.line = text_line_;
            event_.source = source_;
            if (const auto subject = subject_in(event_.text))
                event_.subject = *subject;
            else
                event_.subject.reset();
            if (!has_time_) event_.time.reset();
            if (reading_.event) reading_.event(std::move(event_));
        }
        // What is left of it is written over: memory is asked for once.
        event_.severity = Severity::info;
        has_time_ = false;
        open_ = has_text_ = in_data_ = false;
    }

    CaptureLines& lines_;
    Reading& reading_;
    Integer controller_;
    std::string source_;
    Answer answer_;
    Event event_;
    std::int64_t text_line_ = 0;
    bool open_ = false, has_text_ = false, in_data_ = false, has_time_ = false;
    bool contradicted_ = false;
    std::int64_t count_ = 0;
};

}  // namespace

void read_storcli_events(CaptureLines& lines, Reading& reading, Integer controller) {
    EventsReader(lines, reading, controller).read();
}

StorcliEventsEnd storcli_events_end(std::string_view tail) {
    StorcliEventsEnd end;
    CaptureLines lines(tail);
    Answer answer;
    while (const auto line = lines.next()) {
        if (line->text.starts_with("seqNum:")) answer = {};
        answer.read(line->text, line->number);
    }
    end.controller = answer.controller;
    end.is_whole = answer.has_status;
    return end;
}

// Firmware Term Log Information on controller 0:
// T10: C0:PD 0c rebuild: strip 308457
// ...
// Controller = 0
// Status = Success
// Description = None
void read_storcli_termlog(CaptureLines& lines, Reading& reading) {
    Answer answer;
    bool in_log = false;
    while (const auto line = lines.next()) {
        const auto text = trimmed(line->text);
        if (text.empty() || answer.read(text, line->number)) continue;
        if (text.find("Firmware Term Log Information") != npos) in_log = true;
        if (!in_log) reading.how.unknown_line(line->number);
    }
    if (!answer.has_status && !in_log)
        reading.how.gaps.push_back({lines.count(), "no answer of storcli is in it"});
    answer.tell(reading);
    reading.how.lines = lines.count();
}

}  // namespace qvhost::inventory
