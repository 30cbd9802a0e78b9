// ipmitool chassis status.
//     System Power         : on
//     Power Overload       : false
//     Cooling/Fan Fault    : false
#include <algorithm>
#include <array>
#include <string>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

constexpr auto kChassisKeys = std::to_array<std::string_view>({
    "System Power",          "Power Overload",       "Power Interlock",
    "Main Power Fault",      "Power Control Fault",  "Power Restore Policy",
    "Last Power Event",      "Chassis Intrusion",    "Front-Panel Lockout",
    "Drive Fault",           "Cooling/Fan Fault",    "Sleep Button Disable",
    "Diag Button Disable",   "Reset Button Disable", "Power Button Disable",
    "Sleep Button Disabled", "Diag Button Disabled", "Reset Button Disabled",
    "Power Button Disabled",
});
// The last key that every BMC answers.
constexpr std::string_view kLastChassisKey = "Cooling/Fan Fault";
constexpr auto kChassisWords = std::to_array<std::string_view>(
    {"on", "off", "true", "false", "active", "inactive", "allowed", "not allowed"});

}  // namespace

void read_chassis_status(CaptureLines& lines, Reading& reading) {
    bool is_whole = false;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto pair = key_value(without_chatter(line.text), ":");
        if (!pair || !is_like_any(pair->key, kChassisKeys)) {
            read_aside(line, reading);
            return;
        }
        if (!line.ended && !is_like_any(pair->value, kChassisWords))
            add_gap(reading, line.number, "the capture ends in the middle of a line");
        is_whole = is_whole || pair->key == kLastChassisKey;
        reading.found.chassis_states.push_back(
            {reading.at(line.number), std::string(pair->key), told(pair->value)});
    });
    if (!is_whole && reading.how.lines > 0)
        add_gap(reading, reading.how.lines, "no word on " + std::string(kLastChassisKey));
}

}  // namespace qvhost::inventory
