#include "inventory/storage/controller_tools.h"

#include <algorithm>
#include <array>
#include <string>

#include "text/case.h"

namespace qvhost::inventory {

namespace {

// As lspci prints a controller: address, class, name.
//     03:00.0 RAID bus controller: Broadcom / LSI MegaRAID SAS-3 3108 [Invader] (rev 02)
//     0c:00.0 Serial Attached SCSI controller: Broadcom / LSI SAS3008 PCI-Express Fusion-MPT SAS-3 (rev 02)
//     5c:00.0 Serial Attached SCSI controller: Adaptec Smart Storage PQI 12G SAS/PCIe 3 (rev 01)
//     00:1f.2 RAID bus controller: Intel Corporation C600/X79 series chipset SATA RAID Controller (rev 06)
//     64:00.5 RAID bus controller: Intel Corporation Volume Management Device NVMe RAID Controller (rev 07)

using Classes = std::span<const std::string_view>;
constexpr auto kRaidClasses = std::to_array<std::string_view>({
    "RAID bus controller",
    "Serial Attached SCSI controller",
});
constexpr auto kPlainClasses = std::to_array<std::string_view>({
    "SATA controller",
    "Non-Volatile memory controller",
    "IDE interface",
    "SCSI storage controller",
});

// Controllers of a RAID class whose drives are the system's: words of the name, in lower case.
constexpr auto kPlainNames = std::to_array<std::string_view>({
    "chipset sata raid controller", "sata controller [raid mode]",
    "volume management device",  // of NVMe drives
    "sata storage control unit",
    "pvscsi",  // a virtual machine's
});

struct ToolRow {
    std::string_view words;  // of the name, in lower case
    std::array<std::string_view, 2> tools;
};

// The first row whose words stand in the name decides.
// clang-format off
constexpr auto kTools = std::to_array<ToolRow>({
    {"megaraid",      {"storcli", ""}         },
    {"perc",          {"storcli", ""}         },
    {"tri-mode",      {"storcli", ""}         },
    {"smart storage", {"ssacli", "arcconf"}   },  // sold under several names
    {"smart array",   {"ssacli", ""}          },
    {"adaptec",       {"arcconf", ""}         },
    {"sas2004",       {"sas2ircu", ""}        },
    {"sas2008",       {"sas2ircu", ""}        },
    {"sas2108",       {"sas2ircu", ""}        },
    {"sas2308",       {"sas2ircu", ""}        },
    {"sas3004",       {"storcli", "sas3ircu"} },
    {"sas3008",       {"storcli", "sas3ircu"} },
    {"sas3",          {"storcli", ""}         },
    {"sas4",          {"storcli", ""}         },
});
// clang-format on

std::string name_of(const PciDevice& device) { return lowered(device.name.value_or("")); }

bool is_of(const PciDevice& device, Classes classes) {
    return device.device_class &&
           std::any_of(classes.begin(), classes.end(),
                       [&](std::string_view one) { return device.device_class->starts_with(one); });
}

bool has_plain_name(const PciDevice& device) {
    const auto name = name_of(device);
    return std::any_of(kPlainNames.begin(), kPlainNames.end(), [&](std::string_view words) {
        return name.find(words) != std::string::npos;
    });
}

}  // namespace

bool is_raid_controller(const PciDevice& device) {
    return is_of(device, kRaidClasses) && !has_plain_name(device);
}

bool is_plain_controller(const PciDevice& device) {
    return is_of(device, kPlainClasses) || (is_of(device, kRaidClasses) && has_plain_name(device));
}

std::span<const std::string_view> tools_for(const PciDevice& device) {
    const auto name = name_of(device);
    for (const auto& row : kTools) {
        if (name.find(row.words) != std::string::npos)
            return std::span(row.tools).first(row.tools[1].empty() ? 1 : 2);
    }
    return {};
}

std::string any_of(std::span<const std::string_view> tools) {
    std::string text;
    for (const auto tool : tools) text += (text.empty() ? "" : " or ") + std::string(tool);
    return text;
}

}  // namespace qvhost::inventory
