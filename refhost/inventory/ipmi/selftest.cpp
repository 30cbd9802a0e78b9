// ipmitool mc selftest: what the BMC found when it tested itself.
//     Selftest: passed
// or, with what is wrong in further lines,
//     Selftest: device corrupted
//      -> SEL device not accessible
// or
//     Selftest     : fatal error
//     Failure code : 01
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

constexpr auto kResults = std::to_array<std::string_view>(
    {"passed", "not implemented", "device corrupted", "device error", "fatal error", "fatal"});

// IPMI 2.0, section 20.4: which devices and parts failed.
constexpr auto kDetails = std::to_array<std::string_view>({
    "SEL device not accessible",
    "SDR repository not accessible",
    "FRU device not accessible",
    "IPMB signal lines do not respond",
    "SDR repository empty",
    "Internal Use Area corrupted",
    "Controller update boot block corrupted",
    "controller operational firmware corrupted",
    "Failure code : *",
    "Completion code *",
    "See the log",
    "Device-specific failure*",
    "Device-specific *",
});

std::string_view detail_of(std::string_view line) {
    line = trimmed(line);
    if (line.starts_with("->")) line = trimmed(line.substr(2));
    return line;
}

}  // namespace

void read_selftest(CaptureLines& lines, Reading& reading) {
    Bmc bmc;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto pair = key_value(text, ":");
        const auto detail = detail_of(text);
        if (pair && pair->key == "Selftest") {
            if (!line.ended && !is_like_any(pair->value, kResults)) {
                add_gap(reading, line.number, "the capture ends in the middle of a line");
                return;
            }
            bmc.self_test = told(pair->value);
            bmc.place = reading.at(line.number);
        } else if (bmc.self_test && !detail.empty() && is_like_any(detail, kDetails)) {
            *bmc.self_test += ", " + std::string(detail);
        } else {
            read_aside(line, reading);
        }
    });
    if (bmc.self_test)
        reading.found.bmcs.push_back(std::move(bmc));
    else if (reading.how.lines > 0)
        add_gap(reading, reading.how.lines, "no result of the self test");
}

}  // namespace qvhost::inventory
