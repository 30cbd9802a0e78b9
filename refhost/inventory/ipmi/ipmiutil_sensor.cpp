// ipmiutil sensor: a line a data record; only sensors have a number ("snum").
//     ipmiutil sensor version 3.18
//     -- BMC version 2.71, IPMI version 2.0
//     _ID_ SDR_Type_xx ET Own Typ S_Num   Sens_Description   Hex & Interp Reading
//     0001 SDR IPMB 12 0e dev: 20 00 8f 06 01 BMC
//     0003 SDR Full 01 01 20 a 01 snum 01 CPU1 Temp        = 30 OK   48.00 degrees C
//     002e SDR Comp 02 6f 20 m 08 snum 2c PSU2 Status      = 0009 AC_Lost
//     ipmiutil sensor, completed successfully
// Readings are not taken: for a sensor that is disabled the tool prints "OK   0.00 degrees C".
#include <algorithm>
#include <array>
#include <string>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/units.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

constexpr std::string_view kEnd = "ipmiutil sensor, completed successfully";

constexpr auto kSensorHeadings = std::to_array<std::string_view>({
    "ipmiutil sensor version *",
    "ipmiutil ver *",
    "sensor: version *",
    "Opening * connection to node *",
    "-- BMC version *",
    "_ID_ SDR_Type_xx *",
    kEnd,
    "sensor, completed successfully",
    "ipmiutil sensor, *",
    "#*",
    "[...]",
    "*hi-unrec *",
    "*hi-crit *",
    "*hi-noncr *",
    "*lo-noncr *",
});

std::string upper(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return result;
}

// "01 snum 01 CPU1 Temp        = 30 OK   48.00 degrees C": type, number and name.
bool read_sensor(std::string_view text, Sensor& sensor) {
    std::string_view mark = " snum ";
    auto at = text.find(mark);
    if (at == std::string_view::npos) at = text.find(mark = " sensnum ");
    if (at == std::string_view::npos || at < 2) return false;
    const auto after = text.substr(at + mark.size());
    const auto equals = after.find(" = ");
    if (equals == std::string_view::npos || equals < 3 || after[2] != ' ') return false;
    const auto type = text.substr(at - 2, 2);
    sensor.number = upper(after.substr(0, 2)) + "h";
    sensor.name = told(after.substr(3, equals - 3));
    if (text.find("SDR Full") == std::string_view::npos)
        sensor.kind = "discrete";
    else
        sensor.kind = kind_of_sensor_type(type);
    return true;
}

}  // namespace

void read_ipmiutil_sensors(CaptureLines& lines, Reading& reading) {
    bool has_heading = false, has_end = false;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = trimmed(without_chatter(line.text));
        Sensor sensor;
        if (read_sensor(text, sensor)) {
            sensor.place = reading.at(line.number);
            reading.found.ipmiutil_sensors.push_back(std::move(sensor));
            return;
        }
        const bool is_heading = is_like_any(text, kSensorHeadings);
        has_heading = has_heading || text.starts_with("_ID_ ");
        has_end = has_end || text.ends_with("completed successfully");
        if (!is_heading && text.find(" SDR ") != 4) read_aside(line, reading);
    });
    if (has_heading && !has_end) add_gap(reading, reading.how.lines, "the list has no end");
}

}  // namespace qvhost::inventory
