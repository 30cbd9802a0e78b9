// ipmitool sdr elist: a row a sensor, of five cells and without a heading: name, number, status, entity
// and reading; a discrete sensor has words for its states, or none.
//     CPU1 Temp        | 01h | ok  |  3.1 | 48 degrees C
//     PSU2 Temp        | 09h | ns  | 10.2 | Disabled
//     PSU2 Status      | 34h | ok  | 10.2 | Presence detected, Power Supply AC lost
//     Memory ECC       | 39h | ok  |  8.1 |
// ipmitool sdr: three cells
//     CPU1 Temp        | 48 degrees C      | ok
//     PSU1 Status      | 0x01              | ok
// With -c the cells of sdr elist stand between commas.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/meaning.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/units.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

constexpr auto kStatusWords = std::to_array<std::string_view>(
    {"ok", "ns", "nc", "cr", "nr", "na", "us", "lnc", "lcr", "lnr", "unc", "ucr", "unr"});

// There is no reading.
constexpr auto kNoReading = std::to_array<std::string_view>(
    {"No Reading", "no reading", "Disabled", "disabled", "Not Readable", "Not Available", "na"});

// States that have a comma of their own.
constexpr auto kStatesWithComma = std::to_array<std::string_view>({
    "AC out-of-range, but present",
    "Platform generated SNMP trap, OEM format",
    "S2: sleeping, processor context lost",
    "S3: sleeping, processor & hw context lost, memory retained",
});

// "3.1": the entity's id and instance.
bool is_entity(std::string_view text) {
    const auto point = text.find('.');
    return point != std::string_view::npos && integer(text.substr(0, point)) &&
           integer(text.substr(point + 1));
}

// "30h"
bool is_number(std::string_view text) {
    return text.size() >= 2 && text.ends_with('h') &&
           text.substr(0, text.size() - 1).find_first_not_of("0123456789abcdefABCDEF") ==
               std::string_view::npos;
}

Texts states_of(std::string_view text) {
    Texts states;
    while (!text.empty()) {
        std::size_t end = text.find(", ");
        for (const auto state : kStatesWithComma)
            if (text.starts_with(state)) end = state.size();
        const auto state = trimmed(text.substr(0, end));
        if (!state.empty()) states.emplace_back(state);
        if (end >= text.size()) break;
        text = trimmed(text.substr(end + 1));
    }
    return states;
}

// The last cell: a number and its unit, "No Reading", the hexadecimal states of `sdr`, or words.
void take_reading(std::string_view text, Sensor& sensor) {
    const auto blank = text.find(' ');
    const auto number = real(text.substr(0, blank));
    if (is_like_any(text, kNoReading)) return;
    if (number && blank != std::string_view::npos) {
        const auto unit = trimmed(text.substr(blank));
        sensor.reading = number;
        sensor.unit = std::string(unit);
        sensor.kind = kind_of_sensor(unit, sensor.name.value_or(""));
    } else {
        sensor.kind = "discrete";
        if (!text.starts_with("0x")) sensor.states = states_of(text);
    }
}

// The name is printed at least so wide, and a blank follows.
constexpr std::size_t kNameWidth = 16;

// A line without its end is whole if its last word can be.
bool can_be_whole(std::string_view line, const Sensor& sensor, std::string_view reading) {
    if (reading.empty()) return !line.ends_with('|');
    if (is_like_any(reading, kNoReading)) return true;
    if (sensor.reading) return sensor.unit && is_unit(*sensor.unit);
    return !sensor.states.empty() && severity_of_state(sensor.states.back()).has_value();
}

struct Row {
    std::string_view name, number, status, reading;
    bool fits = false;
};

Row row_of(std::string_view line) {
    const char separator = line.find('|') != std::string_view::npos ? '|' : ',';
    const auto cells = fields_between(line, separator);
    Row row;
    if (cells.size() >= 5 && is_number(cells[1])) {
        // Words of states between commas are cells of their own with -c.
        std::size_t begin = 0;
        for (int i = 0; i < 4; ++i) begin = line.find(separator, begin) + 1;
        row = {cells[0], cells[1], cells[2], trimmed(line.substr(begin))};
        row.fits = is_like_any(row.status, kStatusWords) && is_entity(cells[3]) &&
                   (separator == ',' || cells.size() == 5);
    } else if (cells.size() == 3 && separator == '|' && !is_number(cells[1])) {
        row = {cells[0], {}, cells[2], cells[1]};
        row.fits = is_like_any(row.status, kStatusWords);
    }
    row.fits = row.fits && !is_error_before_name(row.name);
    return row;
}

}  // namespace

void read_sdr(CaptureLines& lines, Reading& reading) {
    const auto before = reading.found.sdr_sensors.size();
    FirstLine first('|', kNameWidth + 1);
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto row = row_of(text);
        if (!row.fits) {
            if (text.find('|') != std::string_view::npos) {
                add_gap(reading, line.number, "not a row of an SDR list");
            } else {
                read_aside(line, reading);
                first.message_before();
            }
            return;
        }
        if (first.is_overwritten(line, text, reading)) return;
        Sensor sensor;
        sensor.place = reading.at(line.number);
        if (!row.name.empty()) sensor.name = std::string(row.name);
        if (!row.number.empty()) sensor.number = std::string(row.number);
        sensor.status = std::string(row.status);
        take_reading(row.reading, sensor);
        if (!line.ended && !row.number.empty() && !can_be_whole(text, sensor, row.reading)) {
            add_gap(reading, line.number, "the capture ends in the middle of a row");
            return;
        }
        reading.found.sdr_sensors.push_back(std::move(sensor));
    });
    if (reading.how.lines > 0 && reading.found.sdr_sensors.size() == before)
        add_gap(reading, reading.how.lines, "no sensor");
}

}  // namespace qvhost::inventory
