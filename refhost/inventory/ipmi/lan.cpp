// The BMC's network, as a maker's own command of ipmiutil tells it.
//     IP Address Source - Static Address
//     IP Address - 192.0.2.110
//     VLAN
#include <algorithm>
#include <array>
#include <string>

#include "inventory/each_line.h"
#include "inventory/ipmi/aside.h"
#include "inventory/ipmi/readers.h"
#include "inventory/text.h"

namespace qvhost::inventory {

namespace {

struct NetworkKey {
    std::string_view key;
    Text Bmc::*member;  // null: nothing that is kept
};

constexpr auto kNetworkKeys = std::to_array<NetworkKey>({
    {"IP Address",               &Bmc::address},
    {"MAC Address",              &Bmc::mac    },
    {"Set in Progress",          nullptr      },
    {"Auth Type Support",        nullptr      },
    {"Auth Type Enable",         nullptr      },
    {"IP Address Source",        nullptr      },
    {"IP Source",                nullptr      },
    {"Subnet Mask",              nullptr      },
    {"SNMP Community String",    nullptr      },
    {"IP Header",                nullptr      },
    {"BMC ARP Control",          nullptr      },
    {"Gratituous ARP Intrvl",    nullptr      },
    {"Gratuitous ARP Intrvl",    nullptr      },
    {"Default Gateway",          nullptr      },
    {"Default Gateway IP",       nullptr      },
    {"Default Gateway MAC",      nullptr      },
    {"Gateway",                  nullptr      },
    {"Backup Gateway IP",        nullptr      },
    {"Backup Gateway MAC",       nullptr      },
    {"802.1q VLAN ID",           nullptr      },
    {"802.1q VLAN Priority",     nullptr      },
    {"VLAN ID",                  nullptr      },
    {"VLAN",                     nullptr      },
    {"RMCP+ Cipher Suites",      nullptr      },
    {"Cipher Suite Priv Max",    nullptr      },
    {"Bad Password Threshold",   nullptr      },
    {"Invalid password disable", nullptr      },
    {"Attempt Count Reset Int.", nullptr      },
    {"User Lockout Interval",    nullptr      },
    {"NIC Mode",                 nullptr      },
    {"IPv6",                     nullptr      },
    {"Host Name",                nullptr      },
    {"Link",                     nullptr      },
});

Text address_of(std::string_view value) {
    auto address = told_identity(value);
    return address && *address != "0.0.0.0" ? address : std::nullopt;
}

}  // namespace

void read_oem_lan(CaptureLines& lines, Reading& reading) {
    Bmc bmc;
    each_line(lines, reading, [&](const CaptureLine& line) {
        const auto text = without_chatter(line.text);
        const auto pair = key_value(text, " - ").value_or(KeyValue{trimmed(text), {}});
        const auto key = std::find_if(kNetworkKeys.begin(), kNetworkKeys.end(),
                                      [&](const NetworkKey& row) { return row.key == pair.key; });
        if (key == kNetworkKeys.end()) {
            read_aside(line, reading);
            return;
        }
        if (key->member == nullptr) return;
        if (!line.ended) {
            add_gap(reading, line.number, "the capture ends in the middle of a value");
            return;
        }
        if (bmc.place.line == 0) bmc.place = reading.at(line.number);
        bmc.*key->member = address_of(pair.value);
    });
    if (bmc.place.line > 0)
        reading.found.bmcs.push_back(std::move(bmc));
    else if (reading.how.lines > 0)
        add_gap(reading, reading.how.lines, "no address");
}

}  // namespace qvhost::inventory
