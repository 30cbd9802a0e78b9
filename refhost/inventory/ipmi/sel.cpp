// ipmitool sel list, sel elist: an entry a line, of cells without a heading: number, date, time, sensor
// type and sensor, event, direction and, for thresholds, the reading.
//        4 | 11/15/23 | 01:13:41 UTC | Fan FAN4 | Lower Non-critical going low  | Asserted | Reading 840 < Threshold 960 RPM
//        b | 11/15/23 | 08:14:30 UTC | Memory #0x39 | Uncorrectable ECC | Asserted
//       25 |  Pre-Init  |0000000292| Processor CPU2 Status | Throttled | Asserted
//       1d | 11/16/23 | 02:16:36 UTC | OEM record c1 | 0f4240 | 01020304051c
//       1f | OEM record e5 | 4f454d2d6e6f74652d30303330
// With -c the cells stand between commas. sel list names the sensor by its number, sel elist by its
// name.
#include <string>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/meaning.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/sel_time.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

enum Cell { kNumber, kDate, kTime, kSensor, kEvent, kDirection, kReading };

bool is_record_number(std::string_view text) {
    return !text.empty() && text.size() <= 8 &&
           text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

bool is_clock(const std::vector<std::string_view>& cells) {
    return cells[kDate] == "Pre-Init" || is_bmc_time(cells[kDate], cells[kTime]) ||
           cells[kDate].find("Unknown") != std::string_view::npos;
}

// "OEM record c1" has no sensor, and no words but its bytes.
bool read_oem_record(const std::vector<std::string_view>& cells, Event& event) {
    const bool timed = cells.size() >= 5 && cells[kSensor].starts_with("OEM record");
    if (!timed && !(cells.size() >= 3 && cells[kDate].starts_with("OEM record"))) return false;
    if (timed) event.time = bmc_time(cells[kDate], cells[kTime]);
    for (std::size_t i = timed ? kSensor : kDate; i < cells.size(); ++i) {
        if (!event.text.empty()) event.text += ' ';
        event.text += cells[i];
    }
    return true;
}

bool read_event(const std::vector<std::string_view>& cells, Event& event) {
    if (cells.size() < kDirection || !is_clock(cells)) return false;
    event.time = bmc_time(cells[kDate], cells[kTime]);

    const auto type = sensor_type_of(cells[kSensor]);
    const auto name = trimmed(cells[kSensor].substr(type.size()));
    // A number alone does not say which kind of sensor it is.
    event.subject = told(name.empty() || name.starts_with('#') ? cells[kSensor] : name);
    for (std::size_t i = kEvent; i < cells.size(); ++i) {
        if (cells[i].empty()) continue;
        if (!event.text.empty()) event.text += ", ";
        event.text += cells[i];
    }
    if (!type.empty()) event.text.insert(0, std::string(type) + ": ");

    const bool gone = cells.size() > kDirection && cells[kDirection] == "Deasserted";
    if (const auto threshold = severity_of_threshold(cells[kEvent]))
        event.severity = gone ? Severity::info : *threshold;
    else if (gone)
        event.severity = severity_of_deasserted(cells[kEvent]);
    else
        event.severity = severity_of_state(cells[kEvent]).value_or(Severity::info);
    return true;
}

// Whether the last cell of a line without its end can be whole.
bool can_be_whole(const std::vector<std::string_view>& cells) {
    const auto last = cells.back();
    return last == "Asserted" || last == "Deasserted";
}

}  // namespace

void read_sel(CaptureLines& lines, Reading& reading) {
    bool is_known_empty = false;
    std::int64_t entries = 0;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const char separator = text.find('|') != std::string_view::npos ? '|' : ',';
        const auto cells = fields_between(text, separator);
        if (cells.size() < 3 || !is_record_number(cells[kNumber])) {
            if (trimmed(text) == "SEL has no entries")
                is_known_empty = true;
            else if (separator == '|')
                add_gap(reading, line.number, "not an entry of the event log");
            else
                read_aside(line, reading);
            return;
        }
        Event event;
        event.place = reading.at(line.number);
        event.source = "bmc";
        const bool is_oem = read_oem_record(cells, event);
        if (!is_oem && !read_event(cells, event)) {
            add_gap(reading, line.number, "not an entry of the event log");
            return;
        }
        if (!line.ended && (is_oem || !can_be_whole(cells))) {
            add_gap(reading, line.number, "the capture ends in the middle of an entry");
            return;
        }
        ++entries;
        reading.event(std::move(event));
    });
    if (reading.how.lines > 0 && entries == 0 && !is_known_empty)
        add_gap(reading, reading.how.lines, "no entry, and no word that there is none");
}

}  // namespace qvhost::inventory
