// A maker's own commands of ipmiutil: versions and lamps, one a line.
//     BMC Firmware             : TCO 2.71
//     PSU2 Firmware: not present
// and
//     System error LED          amber, on
//     Identify LED              off
#include <string>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

void read_oem_versions(CaptureLines& lines, Reading& reading) {
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto pair = key_value(text, ":");
        if (!pair || is_tool_error(text)) {
            read_aside(line, reading);
            return;
        }
        if (!line.ended) {
            add_gap(reading, line.number, "the capture ends in the middle of a value");
            return;
        }
        reading.found.component_versions.push_back(
            {reading.at(line.number), std::string(pair->key), told(pair->value)});
    });
}

void read_oem_leds(CaptureLines& lines, Reading& reading) {
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = trimmed(without_chatter(line.text));
        const auto gap = text.find("  ");
        if (gap == std::string_view::npos || is_tool_error(text)) {
            read_aside(line, reading);
            return;
        }
        const auto state = trimmed(text.substr(gap));
        if (!line.ended && !state.ends_with("on") && !state.ends_with("off") &&
            !state.ends_with("blinking")) {
            add_gap(reading, line.number, "the capture ends in the middle of a line");
            return;
        }
        reading.found.leds.push_back(
            {reading.at(line.number), std::string(text.substr(0, gap)), told(state)});
    });
}

}  // namespace qvhost::inventory
