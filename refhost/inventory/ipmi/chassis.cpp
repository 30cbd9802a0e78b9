// ipmitool chassis status, and ipmitool dcmi power reading.
//     System Power         : on
//     Power Overload       : false
//     Cooling/Fan Fault    : false
//
//     Instantaneous power reading:                   212 Watts
//     IPMI timestamp:                           11/21/26 01:49:57 UTC    Sampling period: ...
//     Power reading state is:                   activated
#include <algorithm>
#include <array>
#include <string>

#include "inventory/each_line.h"
#include "inventory/forms.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/ipmi/sel_time.h"
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

constexpr auto kPowerKeys = std::to_array<std::string_view>({
    "Minimum during sampling period",
    "Maximum during sampling period",
    "Average power reading over sample period",
    "Sampling period",
    "Power reading state is",
});

// "11/21/26 01:49:57 UTC    Sampling period: ..." or "Mon Aug  1 21:22:51 2016"
Text timestamp_of(std::string_view text) {
    const auto parts = words(text);
    if (parts.size() >= 2 && is_bmc_time(parts[0], parts[1])) return bmc_time(parts[0], parts[1]);
    if (parts.size() < 5) return std::nullopt;
    const auto month = month_number(parts[1]);
    const std::string date =
        std::to_string(month) + "/" + std::string(parts[2]) + "/" + std::string(parts[4]);
    return month > 0 ? bmc_time(date, parts[3]) : std::nullopt;
}

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

void read_dcmi_power(CaptureLines& lines, Reading& reading) {
    bool any = false;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto pair = key_value(without_chatter(line.text), ":");
        if (pair && pair->key == "Instantaneous power reading") {
            const auto watts = leading_real(pair->value);
            any = watts.has_value() && pair->value.ends_with("Watts");
            if (any) reading.found.power_readings.push_back({reading.at(line.number), watts});
        } else if (pair && pair->key == "IPMI timestamp") {
            reading.found.clocks.push_back(
                {reading.at(line.number), "bmc", timestamp_of(pair->value), std::nullopt});
        } else if (!pair || !is_like_any(pair->key, kPowerKeys)) {
            read_aside(line, reading);
        }
    });
    if (!any && reading.how.lines > 0) add_gap(reading, reading.how.lines, "no power reading");
}

}  // namespace qvhost::inventory
