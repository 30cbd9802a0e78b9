// ipmiutil sel: headings, then an entry a line: number, date, time, severity, source, sensor type with
// the sensor's number, what happened, and the event's bytes.
//     ipmiutil sel version 3.18
//     -- BMC version 2.71, IPMI version 2.0
//     SEL Ver 0 Support 0b, Size = 0 records (Used=86, Free=4010)
//     RecId Date/Time_______ SEV Src_ Evt_Type___ Sens# Evt_detail - Trig [Evt_data]
//     0004 11/15/23 01:13:41 MIN BMC  Fan #17  Lo Noncrit thresh act=07 thr=08
//     000b 11/15/23 08:14:30 MAJ BMC  Memory #31  Uncorrectable ECC, DIMM(11) 6f [a1 00 0b]
//     001d 11/16/23 02:16:36 INF c1 0f4240 OEM Event 01 02 03 04 05 1c
//     001f INF e5 OEM Event 4f 45 4d 2d 6e 6f 74 65 2d 30 30 33 30
//     ipmiutil sel, completed successfully
// With -e the sensor's name stands behind its number; with -n the cells stand between '|'. Version 2.21
// has no severity and puts the sensor type's code before its name:
//     SEL Ver 51 Support f, Size = 3987 records, Free space = 3553 records
//     RecId Date/Time_______ Source_ Evt_Type SensNum Evt_detail - Trig [Evt_data]
//     0068 07/16/08 11:12:55 BMC  08 Power Supply #70 Removed ef [40 0f ff]
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/meaning.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/sel_time.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct Level {
    std::string_view word;
    Severity severity;
};

// Taken where no table knows what happened.
constexpr auto kLevels = std::to_array<Level>({
    {"INF", Severity::info    },
    {"MIN", Severity::warning },
    {"MAJ", Severity::warning },
    {"CRT", Severity::critical},
});

std::optional<Severity> level_of(std::string_view word) {
    for (const auto& row : kLevels)
        if (row.word == word) return row.severity;
    return std::nullopt;
}

// Lines that say nothing of an entry.
constexpr auto kLogHeadings = std::to_array<std::string_view>({
    "ipmiutil sel version *",
    "ipmiutil ver *",
    "showsel: version *",
    "# ipmiutil *",
    "Opening * connection to node *",
    "Connecting to node *",
    "-- BMC version *",
    "RecId*",
    "ipmiutil sel, completed successfully",
    "showsel, completed successfully",
});

std::optional<std::int64_t> number_behind(std::string_view text, std::string_view word) {
    const auto at = text.find(word);
    if (at == std::string_view::npos) return std::nullopt;
    const auto number = leading_real(text.substr(at + word.size()));
    if (!number || *number < 0 || *number > 1e15) return std::nullopt;
    return static_cast<std::int64_t>(*number);
}

// "SEL Ver ..., Size = 0 records (Used=86, Free=4010)"
std::optional<SelLog> log_of(std::string_view text) {
    if (!text.starts_with("SEL ")) return std::nullopt;
    auto used = number_behind(text, "Used=");
    auto free = number_behind(text, "Free=");
    if (!used) {
        const auto size = number_behind(text, "Size = ");
        free = number_behind(text, "Free space = ");
        if (!size || !free || *size < *free) return std::nullopt;
        used = *size - *free;
    }
    SelLog log;
    log.entries = used;
    if (free && *used + *free > 0)
        log.used_percent = 100.0 * static_cast<double>(*used) / static_cast<double>(*used + *free);
    return log;
}

// Takes the first word and the blanks around it.
std::string_view take_word(std::string_view& text) {
    text = trimmed(text);
    const auto word = text.substr(0, text.find_first_of(" \t"));
    text = trimmed(text.substr(word.size()));
    return word;
}

bool is_hexadecimal(std::string_view text, std::size_t digits) {
    return text.size() == digits &&
           text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

// "Uncorrectable ECC, DIMM(11) 6f [a1 00 0b]" without the trigger and the event's bytes.
std::string_view without_bytes(std::string_view text) {
    const auto bracket = text.rfind('[');
    if (bracket == std::string_view::npos || !text.ends_with(']')) return text;
    auto before = trimmed(text.substr(0, bracket));
    const auto blank = before.rfind(' ');
    const auto last = blank == std::string_view::npos ? before : before.substr(blank + 1);
    if (!is_hexadecimal(last, 2)) return text;
    return trimmed(before.substr(0, before.size() - last.size()));
}

void judge(Event& event, std::string_view words, std::optional<Severity> level) {
    if (const auto threshold = severity_of_threshold(words))
        event.severity = *threshold;
    else if (const auto state = severity_of_state(words))
        event.severity = *state;
    else
        event.severity = level.value_or(Severity::info);
}

// The table's rows with -n: RecId | Date/Time | SEV | Src | Evt_Type | Sensor | Evt_detail
bool read_canonical(std::string_view text, Event& event) {
    const auto cells = fields_between(text, '|');
    if (cells.size() < 7 || !is_hexadecimal(cells[0], 4)) return false;
    auto when = cells[1];
    const auto date = take_word(when);
    const auto level = level_of(cells[2]);
    if (!level || !is_bmc_time(date, when)) return false;
    event.time = bmc_time(date, when);
    event.subject = told(cells[5]);
    event.text = std::string(cells[4]) + ": " + std::string(cells[6]);
    judge(event, cells[6], level);
    return true;
}

// "Fan #17 FAN4  Lo Noncrit thresh act=07 thr=08", behind the source.
void read_sensor_event(std::string_view text, std::optional<Severity> level, Event& event) {
    const auto hash = text.find(" #");
    if (hash == std::string_view::npos) {
        event.text = std::string(text);
        judge(event, text, level);
        return;
    }
    auto type = text.substr(0, hash);
    // Version 2.21: the code before the type's name
    if (type.size() > 3 && type[2] == ' ' && is_hexadecimal(type.substr(0, 2), 2))
        type.remove_prefix(3);
    auto rest = text.substr(hash + 1);
    const auto number = rest.substr(0, rest.find(' '));
    rest.remove_prefix(number.size());
    // With -e a name stands between one blank and two.
    std::string_view name;
    if (rest.starts_with(' ') && !rest.starts_with("  ")) {
        const auto end = rest.find("  ");
        const auto words =
            end == std::string_view::npos ? std::string_view() : trimmed(rest.substr(end));
        if (!without_bytes(words).empty()) {
            name = trimmed(rest.substr(0, end));
            rest = words;
        }
    }
    const auto words = without_bytes(trimmed(rest));
    event.subject = told(name);
    if (!event.subject) event.subject = std::string(type) + " " + std::string(number);
    event.text = std::string(type) + ": " + std::string(words);
    judge(event, words, level);
}

// An entry of the table; false if the line is none.
bool read_entry(std::string_view text, Event& event) {
    if (text.find('|') != std::string_view::npos) return read_canonical(text, event);
    if (!is_hexadecimal(take_word(text), 4)) return false;
    const auto date = take_word(text);
    if (const auto level = level_of(date)) {  // an OEM's record without a time
        if (text.find("OEM Event") == std::string_view::npos) return false;
        event.text = std::string(text);
        event.severity = *level;
        return true;
    }
    const auto time = take_word(text);
    if (!is_bmc_time(date, time)) return false;
    event.time = bmc_time(date, time);
    auto after = text;
    const auto level = level_of(take_word(after));
    if (level) text = after;
    if (level && text.find("OEM Event") != std::string_view::npos &&
        text.find(" #") == std::string_view::npos) {
        event.text = std::string(text);
        event.severity = *level;
        return true;
    }
    take_word(text);  // the source
    if (text.empty()) return false;
    read_sensor_event(text, level, event);
    return true;
}

// A line without its end is whole behind the event's bytes, or behind a threshold of two digits.
bool can_be_whole(std::string_view text) {
    const auto threshold = text.rfind("thr=");
    return text.ends_with(']') ||
           (threshold != std::string_view::npos && is_hexadecimal(text.substr(threshold + 4), 2));
}

}  // namespace

void read_ipmiutil_sel(CaptureLines& lines, Reading& reading) {
    Integer announced;
    std::int64_t entries = 0;
    bool in_usage = false;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = trimmed(without_chatter(line.text));
        // A version that does not know -t explains itself.
        if (in_usage || text.starts_with("Usage:")) {
            if (!in_usage)
                reading.how.errors.push_back({line.number, "the tool printed its usage"});
            in_usage = !text.ends_with("usage or help requested");
            return;
        }
        if (is_like_any(text, kLogHeadings)) {
            if (line.ended || text.ends_with("completed successfully")) return;
            add_gap(reading, line.number, "the capture ends in the middle of a line");
            return;
        }
        if (auto log = log_of(text)) {
            log->place = reading.at(line.number);
            announced = log->entries;
            reading.found.sel_logs.push_back(*std::move(log));
            return;
        }
        Event event;
        event.source = "bmc";
        if (!read_entry(text, event)) {
            const auto first = text.substr(0, text.find(' '));
            if (is_hexadecimal(first, 4))
                add_gap(reading, line.number, "not an entry of the event log");
            else
                read_aside(line, reading);
            return;
        }
        if (!line.ended && !can_be_whole(text)) {
            add_gap(reading, line.number, "the capture ends in the middle of an entry");
            return;
        }
        event.place = reading.at(line.number);
        ++entries;
        reading.event(std::move(event));
    });
    if (announced && *announced > entries)
        add_gap(reading, reading.how.lines,
                std::to_string(*announced) + " entries announced, " + std::to_string(entries) +
                    " read");
    else if (!announced && reading.how.lines > 0)
        add_gap(reading, reading.how.lines, "no count of entries");
}

}  // namespace qvhost::inventory
