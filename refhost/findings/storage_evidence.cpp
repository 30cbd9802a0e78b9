#include "findings/storage_evidence.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "findings/health.h"
#include "inventory/storage/controller_tools.h"
#include "inventory/text.h"

namespace qvhost::findings {

namespace {

using inventory::PciDevice;
using inventory::Survey;
using inventory::SurveyedCapture;

// clang-format off
// Captures of the host's own questions on storage, which are asked only where there is something to tell.
constexpr auto kAnswers = std::to_array<std::string_view>(
    {"host_smartctl_", "host_mdstat", "host_mdadm", "host_zpool", "host_multipath", "host_arcconf_",
     "host_sas2ircu_", "host_sas3ircu_", "host_ssacli"});
// clang-format on

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
    const auto* own = survey.find(inventory::filled_in("host_storcli_c{n}_show.txt", number));
    const auto* plug_ins = survey.find(inventory::filled_in("c{n}_showall.txt", number));
    if (own && (!plug_ins || !plug_ins->whole())) return own;
    return plug_ins;
}

// Captures that tell the same details of a controller, which nobody need ask for: where they were asked
// for, one of them must be whole.
struct DetailRow {
    std::array<std::string_view, 2> of_any;    // "{n}" stands for the controller's number
    std::array<std::string_view, 2> of_first;  // what else tells of controller 0
};

// clang-format off
constexpr auto kDetails = std::to_array<DetailRow>({  // the first row's tell the drives
    {{"host_storcli_c{n}_drives.txt", ""},                     {"pdlist.txt", "c0_pdlist.txt"}},
    {{"c{n}_raidevents.txt", "host_storcli_c{n}_events.txt"},  {"raidevents.txt", ""}         },
    {{"host_storcli_c{n}_bare_drives.txt", ""},                {"", ""}                       },
    {{"host_storcli_c{n}_rebuild.txt", ""},                    {"", ""}                       },
    {{"host_storcli_c{n}_copyback.txt", ""},                   {"", ""}                       },
    {{"host_storcli_c{n}_bbu.txt", ""},                        {"", ""}                       },
    {{"host_storcli_c{n}_cv.txt", ""},                         {"", ""}                       },
});
// clang-format on

// Whether there are drives in enclosures, of which "/cN/eall/sall show all" should have told.
bool lacks_details(const Survey& survey, std::int64_t controller) {
    bool is_there = false;
    for (const auto& drive : survey.inventory.drives) {
        if (drive.tool != "storcli" || drive.controller != controller || !drive.enclosure) continue;
        // A drive behind a host bus adapter may have "N/A" for each counter.
        const bool is_detailed =
            std::any_of(drive.elsewhere.begin(), drive.elsewhere.end(),
                        [](const auto& at) { return at.field == "media_errors"; });
        if (is_detailed) return false;
        is_there = true;
    }
    return is_there;
}

void weigh_details(const Survey& survey, std::int64_t controller, Health& health) {
    for (const auto& row : kDetails) {
        const SurveyedCapture* best = nullptr;
        const auto look_at = [&](std::string_view pattern) {
            const auto* const capture =
                survey.find(inventory::filled_in(pattern, std::to_string(controller)));
            if (capture && (!best || !best->whole())) best = capture;
        };
        for (const auto pattern : row.of_any) look_at(pattern);
        for (const auto name : row.of_first) {
            if (controller == 0) look_at(name);
        }
        if (best) weigh_capture(*best, health);
        if (best && best->whole() && &row == kDetails.begin() && lacks_details(survey, controller))
            add_once(health.missing, best->name + ": it tells none of the drives");
    }
}

// Where storcli answers, how many controllers there are must have been told whole.
void weigh_count(const Survey& survey, Health& health) {
    const auto& controllers = survey.inventory.controllers;
    const bool answers = std::any_of(controllers.begin(), controllers.end(),
                                     [](const auto& one) { return one.tool == "storcli"; });
    const SurveyedCapture* best = nullptr;
    for (const char* name : {"ctrlcount.txt", "host_storcli_show.txt"}) {
        const auto* capture = survey.find(name);
        if (capture && (!best || !best->whole())) best = capture;
    }
    if (answers && best) weigh_capture(*best, health);
}

// Each controller that storcli counts must have been asked, and its answer whole.
std::int64_t weigh_counted(const Survey& survey, Health& health) {
    weigh_count(survey, health);
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
    for (const auto& controller : survey.inventory.controllers) {
        if (controller.tool == "storcli" && controller.number)
            weigh_details(survey, *controller.number, health);
    }
    return most;
}

// That a pool or an array can use a drive says nothing of its health.
bool was_asked(const inventory::Drive& drive) { return drive.smart_alert.has_value(); }

// Drives behind no RAID controller answer for themselves. Each NVMe drive is a PCI device of its own.
void weigh_plain_drives(const Survey& survey, Health& health) {
    const auto& inventory = survey.inventory;
    const auto here = std::count_if(
        inventory.pci_devices.begin(), inventory.pci_devices.end(), [](const PciDevice& device) {
            return device.device_class &&
                   device.device_class->starts_with("Non-Volatile memory controller");
        });
    std::int64_t asked = 0;
    for (const auto& drive : inventory.drives) {
        if (drive.controller) continue;
        if (was_asked(drive)) {
            if (drive.interface == "NVMe") ++asked;
        } else if (drive.interface == "NVMe" || drive.interface == "SATA" ||
                   drive.interface == "SAS") {
            add_once(health.missing, drive.device.value_or("a drive") + " was not asked");
        }
    }
    if (asked < here)
        add_once(health.missing,
                 "NVMe drives that were not asked: " + std::to_string(here - asked));
}

// Each thing that has a state must have told it.
void weigh_states(const inventory::Inventory& inventory, Health& health) {
    const auto weigh = [&](const auto& entities, const char* what) {
        for (const auto& one : entities) {
            if (one.state || !one.controller) continue;
            add_once(health.missing, one.place.capture + ", line " +
                                         std::to_string(one.place.line) + ": " + what +
                                         " without a state");
        }
    };
    weigh(inventory.volumes, "a volume");
    weigh(inventory.drives, "a drive");
    weigh(inventory.batteries, "a battery");
}

// Each RAID controller that lspci shows must be one that a tool told of. Those that one tool alone can tell
// of come first, so that they find theirs; last come those of which no tool is known, which may be what a
// tool told of under another name. Returns whether there is a RAID controller.
bool weigh_controllers(const inventory::Inventory& inventory, Health& health) {
    std::map<std::string_view, int> told;
    for (const auto& controller : inventory.controllers) ++told[controller.tool];

    std::vector<const PciDevice*> devices;
    for (const auto& device : inventory.pci_devices) {
        if (inventory::is_raid_controller(device)) devices.push_back(&device);
    }
    const auto choice = [](const PciDevice* device) {
        const auto tools = inventory::tools_for(*device).size();
        return tools == 0 ? std::numeric_limits<std::size_t>::max() : tools;
    };
    std::stable_sort(devices.begin(), devices.end(), [&](const auto* one, const auto* other) {
        return choice(one) < choice(other);
    });
    for (const auto* device : devices) {
        const auto here = device->name.value_or("a RAID controller") + " is here, and ";
        const auto tools = inventory::tools_for(*device);
        const auto may_tell = [&](std::string_view tool) {
            return tools.empty() || std::find(tools.begin(), tools.end(), tool) != tools.end();
        };
        const auto teller = std::find_if(told.begin(), told.end(), [&](const auto& one) {
            return one.second > 0 && may_tell(one.first);
        });
        if (teller != told.end()) {
            --teller->second;
        } else {
            add_once(health.missing,
                     here + (tools.empty() ? "no tool for it is known"
                                           : "nothing was read of it; its tool is " +
                                                 inventory::any_of(tools)));
        }
    }
    return !devices.empty();
}

}  // namespace

bool weigh_storage(const Survey& survey, Health& health) {
    const auto& inventory = survey.inventory;
    weigh_states(inventory, health);
    const auto counted = weigh_counted(survey, health);
    // Every other capture that tells of a controller, a volume or a software array, or should.
    for (const auto& capture : survey.captures) {
        const bool tells =
            std::any_of(inventory.controllers.begin(), inventory.controllers.end(),
                        [&](const auto& one) { return one.place.capture == capture.name; }) ||
            std::any_of(inventory.volumes.begin(), inventory.volumes.end(),
                        [&](const auto& one) { return one.place.capture == capture.name; });
        const bool should_tell =
            !is_not_installed(capture) &&
            std::any_of(kAnswers.begin(), kAnswers.end(), [&](std::string_view beginning) {
                return capture.name.starts_with(beginning);
            });
        if (tells || should_tell) weigh_capture(capture, health);
    }
    weigh_plain_drives(survey, health);
    const auto* lspci = survey.find("host_lspci.txt");
    const bool has_raid = weigh_controllers(inventory, health);
    const bool has_plain = std::any_of(inventory.pci_devices.begin(), inventory.pci_devices.end(),
                                       inventory::is_plain_controller);
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
