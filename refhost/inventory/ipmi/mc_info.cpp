// ipmitool mc info, and the same answer of a maker's own command: what the BMC is.
//     Device ID                 : 32
//     Firmware Revision         : 2.71
//     IPMI Version              : 2.0
//     Additional Device Support :
//         Sensor Device
//     Aux Firmware Rev Info     :
//         0x00
#include <algorithm>
#include <array>
#include <string>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct DeviceKey {
    std::string_view key;
    Text Bmc::*member;  // null: nothing that is kept
};

constexpr auto kDeviceKeys = std::to_array<DeviceKey>({
    {"Firmware Revision",         &Bmc::firmware },
    {"IPMI Version",              &Bmc::ipmi     },
    {"Self Test",                 &Bmc::self_test},
    {"Device ID",                 nullptr        },
    {"Device Revision",           nullptr        },
    {"Manufacturer ID",           nullptr        },
    {"Manufacturer Name",         nullptr        },
    {"Product ID",                nullptr        },
    {"Product Name",              nullptr        },
    {"Device Available",          nullptr        },
    {"Provides Device SDRs",      nullptr        },
    {"Additional Device Support", nullptr        },
    {"Aux Firmware Rev Info",     nullptr        },
    {"Build Time",                nullptr        },
    {"BMC Clock",                 nullptr        },
});

constexpr auto kDevices = std::to_array<std::string_view>(
    {"Sensor Device", "SDR Repository Device", "SEL Device", "FRU Inventory Device",
     "IPMB Event Receiver", "IPMB Event Generator", "Bridge", "Chassis Device"});

// A line of the two lists at the end.
bool is_list_item(std::string_view text) {
    text = trimmed(text);
    return std::find(kDevices.begin(), kDevices.end(), text) != kDevices.end() ||
           (text.size() == 4 && text.starts_with("0x") && integer(text));
}

}  // namespace

void read_mc_info(CaptureLines& lines, Reading& reading) {
    Bmc bmc;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto pair = key_value(text, ":");
        const auto key =
            std::find_if(kDeviceKeys.begin(), kDeviceKeys.end(),
                         [&](const DeviceKey& row) { return pair && row.key == pair->key; });
        if (key == kDeviceKeys.end()) {
            if (!is_list_item(text)) read_aside(line, reading);
            return;
        }
        if (key->member == nullptr) return;
        if (!line.ended) {
            add_gap(reading, line.number, "the capture ends in the middle of a value");
            return;
        }
        if (bmc.place.line == 0) bmc.place = reading.at(line.number);
        bmc.*key->member = told(pair->value);
    });
    if (reading.how.lines > 0 && (!bmc.firmware || !bmc.ipmi))
        add_gap(reading, reading.how.lines, "no firmware revision or no IPMI version");
    if (bmc.place.line > 0) reading.found.bmcs.push_back(std::move(bmc));
}

}  // namespace qvhost::inventory
