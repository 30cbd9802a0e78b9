#include "findings/storage_evidence.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

#include "findings/health.h"

namespace qvhost::findings {

namespace {

using inventory::PciDevice;
using inventory::Survey;
using inventory::SurveyedCapture;

// Which tool reads a storage controller that lspci shows, and which captures hold what it said. The
// first row whose words stand in the device's name decides.
struct ToolRow {
    std::string_view words;  // lower case
    const char* tool;
    std::array<std::string_view, 3> captures;  // beginnings of names
};

// clang-format off
constexpr auto kTools = std::to_array<ToolRow>({
    {"megaraid",      "storcli",  {"c", "host_storcli", "host_perccli"}},
    {"perc",          "storcli",  {"c", "host_storcli", "host_perccli"}},
    {"adaptec",       "arcconf",  {"Firmware/", "host_arcconf", ""}    },
    {"smart array",   "ssacli",   {"host_ssacli", "", ""}              },
    {"smart storage", "ssacli",   {"host_ssacli", "host_arcconf", ""}  },
    {"sas2008",       "sas2ircu", {"host_sas2ircu", "c", ""}           },
    {"sas2308",       "sas2ircu", {"host_sas2ircu", "ir.txt", "c"}     },
    {"sas3008",       "storcli",  {"c", "host_storcli", "host_sas3ircu"}},
    {"sas3",          "storcli",  {"c", "host_storcli", ""}            },
    {"tri-mode",      "storcli",  {"c", "host_storcli", ""}            },
});

// Classes of PCI devices that have drives behind them.
constexpr auto kRaidClasses = std::to_array<std::string_view>({"RAID bus controller", "Serial Attached SCSI controller"});
constexpr auto kPlainClasses = std::to_array<std::string_view>(
    {"SATA controller", "Non-Volatile memory controller", "IDE interface", "SCSI storage controller"});
// clang-format on

template <class Classes>
bool is_one_of(const PciDevice& device, const Classes& classes) {
    return device.device_class &&
           std::any_of(classes.begin(), classes.end(),
                       [&](std::string_view one) { return device.device_class->starts_with(one); });
}

std::string lower(const inventory::Text& text) {
    std::string all = text.value_or("");
    for (char& c : all) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return all;
}

const ToolRow* tool_for(const PciDevice& device) {
    const auto name = lower(device.name);
    for (const auto& row : kTools) {
        if (name.find(row.words) != std::string::npos) return &row;
    }
    return nullptr;
}

void add_once(std::vector<std::string>& texts, const std::string& text) {
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
}

void weigh_capture(const SurveyedCapture& capture, Health& health) {
    if (capture.whole()) {
        add_once(health.judged_by, capture.name);
    } else {
        add_once(health.missing, why_not_whole(capture));
    }
}

// "c3_showall.txt" of the plug-in, or the host's own question.
const SurveyedCapture* summary_of(const Survey& survey, std::int64_t controller) {
    const auto number = std::to_string(controller);
    const auto* own = survey.find("host_storcli_c" + number + "_show.txt");
    const auto* plug_ins = survey.find("c" + number + "_showall.txt");
    if (own && (!plug_ins || !plug_ins->whole())) return own;
    return plug_ins;
}

// Whether an entity stands in a capture of the row's tool.
bool was_read(const Survey& survey, const ToolRow& row) {
    const auto& controllers = survey.inventory.controllers;
    return std::any_of(
        controllers.begin(), controllers.end(), [&](const inventory::Controller& one) {
            return std::any_of(
                row.captures.begin(), row.captures.end(), [&](std::string_view beginning) {
                    return !beginning.empty() && one.place.capture.starts_with(beginning);
                });
        });
}

// Each controller that storcli counts must have been asked, and its answer whole.
std::int64_t weigh_counted(const Survey& survey, Health& health) {
    std::int64_t most = 0;
    for (const auto& counted : survey.inventory.controller_counts) {
        if (counted.tool != "storcli") continue;
        constexpr std::int64_t kMost = 256;  // a count beyond it is no count
        const auto count = std::clamp<std::int64_t>(counted.count.value_or(0), 0, kMost);
        most = std::max(most, count);
    }
    for (std::int64_t number = 0; number < most; ++number) {
        if (const auto* capture = summary_of(survey, number)) {
            weigh_capture(*capture, health);
        } else {
            add_once(health.missing, "controller " + std::to_string(number) + " was not asked");
        }
    }
    return most;
}

}  // namespace

bool weigh_storage(const Survey& survey, Health& health) {
    const auto& inventory = survey.inventory;
    const auto counted = weigh_counted(survey, health);
    // Every other capture that tells of a controller, a volume or a software array.
    for (const auto& capture : survey.captures) {
        const bool tells =
            std::any_of(inventory.controllers.begin(), inventory.controllers.end(),
                        [&](const auto& one) { return one.place.capture == capture.name; }) ||
            std::any_of(inventory.volumes.begin(), inventory.volumes.end(),
                        [&](const auto& one) { return one.place.capture == capture.name; });
        if (tells) weigh_capture(capture, health);
    }
    const auto* lspci = survey.find("host_lspci.txt");
    if (!lspci) lspci = survey.find("lspci.log");
    bool has_raid = false;
    bool has_plain = false;
    for (const auto& device : inventory.pci_devices) {
        has_plain = has_plain || is_one_of(device, kPlainClasses);
        if (!is_one_of(device, kRaidClasses)) continue;
        has_raid = true;
        const auto name = device.name.value_or("a RAID controller");
        const auto* row = tool_for(device);
        if (!row) {
            if (inventory.controllers.empty())
                add_once(health.missing, name + " is here, and no tool for it is known");
        } else if (!was_read(survey, *row)) {
            add_once(health.missing,
                     name + " is here, and nothing was read of it; its tool is " + row->tool);
        }
    }
    const bool read_something =
        !inventory.controllers.empty() || !inventory.volumes.empty() || !inventory.drives.empty();
    if (read_something || has_raid) return false;

    const auto* count = survey.find("ctrlcount.txt");
    const bool none_counted = count && count->whole() && counted == 0;
    if (none_counted) add_once(health.judged_by, count->name);
    if (lspci && lspci->whole()) add_once(health.judged_by, lspci->name);
    if (has_plain) {
        add_once(health.missing, "drives behind no RAID controller were not asked");
        return false;
    }
    if (lspci && lspci->whole()) return true;
    if (count && !count->whole()) {
        add_once(health.missing, why_not_whole(*count));
    } else {
        add_once(health.missing, none_counted ? "drives behind no RAID controller were not asked"
                                              : "no RAID controller was asked");
    }
    return false;
}

}  // namespace qvhost::findings
