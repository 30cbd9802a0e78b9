// ipmitool sensor: a row a sensor, of ten cells and without a heading:
//     CPU1 Temp        | 48.000     | degrees C  | ok    | na        | 0.000     | 5.000     | ...
//     CPU2 Temp        | na         |            | na    | na        | na        | na        | ...
//     PSU1 Status      | 0x1        | discrete   | 0x0180| na        | na        | na        | ...
// A name may be empty, hold blanks and even '|', and need not be unique. The tool has no word for its
// end: a BMC that stops leaves a row of fewer cells.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/units.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

enum Cell { kName, kReading, kUnit, kStatus, kFirstThreshold };

constexpr auto kThresholds = std::to_array<Real Sensor::*>(
    {&Sensor::lnr, &Sensor::lc, &Sensor::lnc, &Sensor::unc, &Sensor::uc, &Sensor::unr});
constexpr std::size_t kCells = kFirstThreshold + kThresholds.size();

// ipmitool pads names to so many characters, and IPMI allows no longer ones of eight bits.
constexpr std::size_t kNameWidth = 16;

constexpr auto kStatusWords =
    std::to_array<std::string_view>({"ok", "nc", "cr", "nr", "na", "ns", "us"});

bool is_status(std::string_view text) {
    return std::find(kStatusWords.begin(), kStatusWords.end(), text) != kStatusWords.end() ||
           (text.starts_with("0x") && integer(text));
}

bool is_number_or_na(std::string_view text) { return text == "na" || real(text); }

// ipmitool writes three digits behind the point; a number with fewer is one that was cut off.
bool is_whole_number(std::string_view text) {
    const auto point = text.find('.');
    return text == "na" || (point != std::string_view::npos && text.size() - point == 4);
}

// The ten cells of a row, the name's own '|' put back; empty if it is no such row.
std::vector<std::string_view> cells_of(std::string_view line) {
    auto cells = fields_between(line, '|');
    if (cells.size() < kCells) return {};
    if (cells.size() > kCells) {
        // The separators that are not the name's are the last nine.
        std::size_t end = line.size();
        for (std::size_t i = 1; i < kCells; ++i) end = line.rfind('|', end - 1);
        if (end > kNameWidth + 1) return {};
        cells.erase(cells.begin(), cells.end() - (kCells - 1));
        cells.insert(cells.begin(), trimmed(line.substr(0, end)));
    }
    const bool fits = (is_number_or_na(cells[kReading]) || integer(cells[kReading])) &&
                      is_status(cells[kStatus]) && !is_error_before_name(cells[kName]) &&
                      std::all_of(cells.begin() + kFirstThreshold, cells.end(), is_number_or_na);
    return fits ? cells : std::vector<std::string_view>{};
}

Sensor sensor_of(const std::vector<std::string_view>& cells) {
    Sensor sensor;
    const bool is_discrete = cells[kUnit] == "discrete";
    if (!cells[kName].empty()) sensor.name = std::string(cells[kName]);
    if (!cells[kUnit].empty()) {
        sensor.kind = kind_of_sensor(cells[kUnit], cells[kName]);
        if (!is_discrete) sensor.unit = std::string(cells[kUnit]);
    }
    if (!is_discrete) sensor.reading = real(cells[kReading]);
    sensor.status = std::string(cells[kStatus]);
    for (std::size_t i = 0; i < kThresholds.size(); ++i)
        sensor.*kThresholds[i] = real(cells[kFirstThreshold + i]);
    return sensor;
}

}  // namespace

void read_sensors(CaptureLines& lines, Reading& reading) {
    const auto before = reading.found.sensors.size();
    std::size_t padded = 0;  // the length of rows whose last cell has blanks behind it
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        if (text.find('|') == std::string_view::npos) {
            read_aside(line, reading);
            return;
        }
        const auto cells = cells_of(text);
        if (cells.empty()) {
            add_gap(reading, line.number, "not a row of ten cells");
            return;
        }
        auto sensor = sensor_of(cells);
        if (!line.ended && (!is_whole_number(cells.back()) || text.size() < padded)) {
            add_gap(reading, line.number, "the capture ends in the middle of a row");
            if (!is_whole_number(cells.back())) sensor.*kThresholds.back() = std::nullopt;
        }
        padded = text.ends_with(' ') ? text.size() : 0;
        sensor.place = reading.at(line.number);
        reading.found.sensors.push_back(std::move(sensor));
    });
    if (reading.how.lines > 0 && reading.found.sensors.size() == before)
        add_gap(reading, reading.how.lines, "no sensor");
}

}  // namespace qvhost::inventory
