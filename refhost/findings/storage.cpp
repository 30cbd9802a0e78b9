#include "findings/storage.h"

#include <array>
#include <cstdio>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "findings/states.h"

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::Integer;
using inventory::Inventory;
using inventory::Real;
using inventory::TopologyRow;
using inventory::Volume;

// clang-format off
// Volumes, as storcli, arcconf, sas2ircu, mdadm, zpool and multipath print them.
constexpr auto kVolumeStates = std::to_array<StateRow>({
    {"Optl",                          ""                    },
    {"Optimal",                       ""                    },
    {"Okay (OKY)",                    ""                    },
    {"Optimal (OPT)",                 ""                    },
    {"OK",                            ""                    },
    {"ONLINE",                        ""                    },
    {"clean",                         ""                    },
    {"active",                        ""                    },
    {"read-auto",                     ""                    },
    {"write-pending",                 ""                    },
    {"OfLn",                          "volume_offline"      },
    {"Offline",                       "volume_offline"      },
    {"Failed",                        "volume_offline"      },
    {"Failed (FLD)",                  "volume_offline"      },
    {"Missing (MIS)",                 "volume_offline"      },
    {"FAULTED",                       "volume_offline"      },
    {"UNAVAIL",                       "volume_offline"      },
    {"SUSPENDED",                     "volume_offline"      },
    {"inactive",                      "volume_offline"      },
    {"broken",                        "volume_offline"      },
    {"Dgrd",                          "volume_no_redundancy"},
    {"Degraded",                      "volume_no_redundancy"},  // but for RAID 6, see below
    {"Degraded (DGD)",                "volume_no_redundancy"},
    {"Interim Recovery Mode",         "volume_no_redundancy"},
    {"Pdgd",                          "volume_degraded"     },
    {"Partially Degraded",            "volume_degraded"     },
    {"Suboptimal, Fault Tolerant",    "volume_degraded"     },
    {"Suboptimal",                    "volume_degraded"     },
    {"Sub-Optimal",                   "volume_degraded"     },
    {"recovering",                    "volume_rebuild"      },
    {"resyncing",                     "volume_maintenance"  },
    {"checking",                      "volume_maintenance"  },
    {"reshaping",                     "volume_maintenance"  },
});

// What may run on a volume.
constexpr auto kOperations = std::to_array<StateRow>({
    {"None",                          ""                    },
    {"Rebuild",                       "volume_rebuild"      },
    {"Rebuilding",                    "volume_rebuild"      },
    {"recovery",                      "volume_rebuild"      },
    {"resilver",                      "volume_rebuild"      },
    {"Copyback",                      "volume_rebuild"      },
    {"CC",                            "volume_maintenance"  },
    {"Consistency Check",             "volume_maintenance"  },
    {"check",                         "volume_maintenance"  },
    {"resync",                        "volume_maintenance"  },
    {"reshape",                       "volume_maintenance"  },
    {"scrub",                         "volume_maintenance"  },
    {"Init",                          "volume_maintenance"  },
    {"FGI",                           "volume_maintenance"  },
    {"BGI",                           "volume_maintenance"  },
    {"Build/Verify",                  "volume_maintenance"  },
    {"Verify",                        "volume_maintenance"  },
    {"Patrol Read",                   "volume_maintenance"  },
});

// Rows of a topology that stand for a drive group or an array.
constexpr auto kTopologyStates = std::to_array<StateRow>({
    {"Optl",    ""                      },
    {"Optimal", ""                      },
    {"Onln",    ""                      },
    {"OfLn",    "topology_offline"      },
    {"Offline", "topology_offline"      },
    {"Failed",  "topology_offline"      },
    {"Dgrd",    "topology_no_redundancy"},
    {"Pdgd",    "topology_state"        },
    {"Rec",     "topology_state"        },
});

constexpr auto kDriveStates = std::to_array<StateRow>({
    {"Onln",                         ""                      },
    {"JBOD",                         ""                      },
    {"GHS",                          ""                      },
    {"DHS",                          ""                      },
    {"UGood",                        ""                      },
    {"Online",                       ""                      },
    {"Online (JBOD)",                ""                      },
    {"Ready",                        ""                      },
    {"Raw",                          ""                      },
    {"Raw (Pass Through)",           ""                      },
    {"Hot Spare",                    ""                      },
    {"Hot-Spare",                    ""                      },
    {"Global Hot-Spare",             ""                      },
    {"Global Hot Spare",             ""                      },
    {"Dedicated Hot-Spare",          ""                      },
    {"Dedicated Hot Spare",          ""                      },
    {"Optimal",                      ""                      },
    {"Optimal (OPT)",                ""                      },
    {"Ready (RDY)",                  ""                      },
    {"Hot Spare (HSP)",              ""                      },
    {"Available (AVL)",              ""                      },
    {"Standby (SBY)",                ""                      },
    {"OK",                           ""                      },
    {"active sync",                  ""                      },
    {"spare",                        ""                      },
    {"Offln",                        "drive_failed"          },
    {"Offline",                      "drive_failed"          },
    {"Failed",                       "drive_failed"          },
    {"Failed (FLD)",                 "drive_failed"          },
    {"Missing",                      "drive_failed"          },
    {"Missing (MIS)",                "drive_failed"          },
    {"Msng",                         "drive_failed"          },
    {"Dead",                         "drive_failed"          },
    {"Removed",                      "drive_failed"          },
    {"faulty",                       "drive_failed"          },
    {"FAULTED",                      "drive_failed"          },
    {"UNAVAIL",                      "drive_failed"          },
    {"UBad",                         "drive_unconfigured_bad"},
    {"Rbld",                         "drive_rebuild"         },
    {"Cpybck",                       "drive_rebuild"         },
    {"CBShld",                       "drive_rebuild"         },
    {"Rebuilding",                   "drive_rebuild"         },
    {"Rebuilding (RBLD)",            "drive_rebuild"         },
    {"spare rebuilding",             "drive_rebuild"         },
});

constexpr auto kControllerStates = std::to_array<StateRow>({
    {"Optimal",         ""                    },
    {"Optl",            ""                    },
    {"Opt",             ""                    },
    {"OK",              ""                    },
    {"Okay",            ""                    },
    {"Ready",           ""                    },
    {"Success",         ""                    },
    {"Failed",          "controller_failed"   },
    {"Fail",            "controller_failed"   },
    {"Dead",            "controller_failed"   },
    {"Offline",         "controller_failed"   },
    {"Not Responding",  "controller_failed"   },
});  // each other word asks for attention

constexpr auto kBatteryStates = std::to_array<StateRow>({
    {"Optimal",      ""                   },
    {"Optl",         ""                   },
    {"OK",           ""                   },
    {"Opt",          ""                   },
    {"Ready",        ""                   },
    {"Charged",      ""                   },
    {"Learning",     "battery_maintenance"},
    {"Lrn",          "battery_maintenance"},
    {"Charging",     "battery_maintenance"},
    {"Recharging",   "battery_maintenance"},
    {"Discharging",  "battery_maintenance"},
});  // each other word is a failure, or may be one

constexpr auto kEnclosureStates = std::to_array<StateRow>({
    {"OK",      ""},
    {"Optimal", ""},
    {"Optl",    ""},
    {"Online",  ""},
    {"On",      ""},
});
// clang-format on

std::string number_text(const Integer& number) { return number ? std::to_string(*number) : ""; }

std::string percent_text(double percent) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g %%", percent);
    return text;
}

bool at_least_raid6(const inventory::Text& raid) {
    return raid && raid->find('6') != std::string::npos;
}

// "md0 : active": software arrays join several words, "clean, degraded, recovering".
std::vector<std::string_view> state_words(const Volume& volume) {
    std::vector<std::string_view> words;
    std::string_view text = *volume.state;
    if (rule_for(kVolumeStates, text)) return {text};
    while (true) {
        const auto comma = text.find(", ");
        words.push_back(text.substr(0, comma));
        if (comma == std::string_view::npos) return words;
        text.remove_prefix(comma + 2);
    }
}

// The drive groups of which nothing more may be lost, and controllers whose tool names no groups.
class Redundancy {
public:
    explicit Redundancy(const Inventory& inventory) {
        for (const auto& volume : inventory.volumes) {
            if (volume.drive_group) has_groups_.insert(volume.controller);
        }
        for (const auto& drive : inventory.drives) {
            if (drive.drive_group) has_groups_.insert(drive.controller);
        }
    }
    void is_lost(const Integer& controller, const Integer& group) {
        lost_.insert({controller, group});
    }
    bool is_lost_for(const Drive& drive) const {
        if (!has_groups_.contains(drive.controller)) {
            const auto any = lost_.lower_bound({drive.controller, std::nullopt});
            return any != lost_.end() && any->first == drive.controller;
        }
        return drive.drive_group && lost_.contains({drive.controller, drive.drive_group});
    }

private:
    std::set<Integer> has_groups_;
    std::set<std::pair<Integer, Integer>> lost_;
};

std::string at_controller(const Integer& controller) {
    return controller ? " of controller " + std::to_string(*controller) : "";
}

std::string volume_key(const Volume& volume) {
    if (volume.controller)
        return "c" + number_text(volume.controller) + "_v" +
               (volume.number ? number_text(volume.number) : volume.name.value_or(""));
    return volume.device.value_or(volume.name.value_or(""));
}

std::string volume_subject(const Volume& volume) {
    std::string text = "Volume";
    if (volume.number) text += " " + number_text(volume.number);
    if (volume.name) text += " \"" + *volume.name + "\"";
    if (volume.device && !volume.controller) text += " " + *volume.device;
    text += at_controller(volume.controller);
    if (volume.raid) text += " (" + *volume.raid + ")";
    return text;
}

// RAID 6 survives the loss of a second drive, unless the tool has a word of its own for that.
std::string_view with_raid_level(std::string_view rule_name, const Volume& volume,
                                 std::string_view state) {
    if (rule_name == "volume_no_redundancy" && at_least_raid6(volume.raid) &&
        !same_word(state, "Dgrd"))
        return "volume_degraded";
    return rule_name;
}

void judge_volume(const Volume& volume, Redundancy& redundancy, Collector& findings) {
    const auto remark = [&](std::string_view rule_name, const std::string& says) {
        findings.add(volume_key(volume), volume_subject(volume), std::string(rule_name).c_str(),
                     says, volume.place);
    };
    if (volume.state) {
        for (const auto state : state_words(volume)) {
            const auto found = rule_for(kVolumeStates, state);
            const auto rule_name = with_raid_level(found.value_or("volume_state"), volume, state);
            if (rule_name == "volume_no_redundancy" || rule_name == "volume_offline")
                redundancy.is_lost(volume.controller, volume.drive_group);
            if (!rule_name.empty()) remark(rule_name, "state " + *volume.state);
        }
    }
    if (volume.operation) {
        const auto found = rule_for(kOperations, *volume.operation);
        std::string says = *volume.operation;
        if (volume.progress_percent) says += " at " + percent_text(*volume.progress_percent);
        // An operation that no row knows is work that runs, and no failure.
        if (const auto rule_name = found.value_or("volume_maintenance"); !rule_name.empty())
            remark(rule_name, says);
    }
}

// Speaks up where no volume of the group has said the same: the worst row of each group.
void judge_topology(const Inventory& inventory, Redundancy& redundancy, Collector& findings) {
    std::set<std::pair<Integer, Integer>> told;
    for (const auto& volume : inventory.volumes) {
        if (!volume.state || !volume.drive_group) continue;
        const auto found = rule_for(kVolumeStates, *volume.state);
        if (!found || !found->empty()) told.insert({volume.controller, volume.drive_group});
    }
    for (const TopologyRow& row : inventory.topology) {
        if (!row.state || (row.type && same_word(*row.type, "DRIVE"))) continue;
        const auto rule_name = rule_for(kTopologyStates, *row.state).value_or("topology_state");
        if (rule_name.empty()) continue;
        if (rule_name != "topology_state") redundancy.is_lost(row.controller, row.drive_group);
        if (told.contains({row.controller, row.drive_group})) continue;
        const auto group = number_text(row.drive_group);
        findings.add(
            "c" + number_text(row.controller) + "_dg" + group,
            "Drive group " + group + at_controller(row.controller), std::string(rule_name).c_str(),
            "topology says " + *row.state + (row.type ? " for " + *row.type : ""), row.place);
    }
}

// A row of the topology without a drive: one is missing there.
void judge_missing_members(const Inventory& inventory, const Redundancy& redundancy,
                           Collector& findings) {
    for (const TopologyRow& row : inventory.topology) {
        if (!row.state || !row.type || !same_word(*row.type, "DRIVE")) continue;
        if (rule_for(kDriveStates, *row.state) != "drive_failed" || row.slot) continue;
        Drive missing;
        missing.controller = row.controller;
        missing.drive_group = row.drive_group;
        const auto group = number_text(row.drive_group);
        const auto position = number_text(row.row);
        findings.add(
            "c" + number_text(row.controller) + "_dg" + group + "_row" + position,
            "Drive at row " + position + " of drive group " + group + at_controller(row.controller),
            redundancy.is_lost_for(missing) ? "drive_failed_no_redundancy" : "drive_failed",
            "topology says " + *row.state, row.place);
    }
}

std::string drive_place(const Drive& drive) {
    if (drive.slot)
        return (drive.enclosure ? number_text(drive.enclosure) : "") + ":" +
               number_text(drive.slot);
    if (drive.device_id) return "device " + number_text(drive.device_id);
    return drive.device.value_or("");
}

std::string drive_key(const Drive& drive) {
    if (drive.serial) return *drive.serial;
    return (drive.controller ? "c" + number_text(drive.controller) + "_" : "") + drive_place(drive);
}

std::string drive_subject(const Drive& drive) {
    auto text = "Drive " + drive_place(drive) + at_controller(drive.controller);
    if (drive.device && drive.slot) text += ", " + *drive.device;
    if (drive.model) text += ", " + *drive.model;
    if (drive.serial) text += ", serial " + *drive.serial;
    return text;
}

void judge_drive(const Drive& drive, const Redundancy& redundancy, Collector& findings) {
    const auto remark = [&](std::string_view rule_name, std::string_view field,
                            const std::string& says) {
        findings.add(drive_key(drive), drive_subject(drive), std::string(rule_name).c_str(), says,
                     place_of(drive, field));
    };
    const bool exposed = redundancy.is_lost_for(drive);
    if (drive.state) {
        auto rule_name = rule_for(kDriveStates, *drive.state).value_or("drive_state");
        if (rule_name == "drive_failed" && exposed) rule_name = "drive_failed_no_redundancy";
        auto says = "state " + *drive.state;
        if (drive.rebuild_percent) says += ", rebuilt to " + percent_text(*drive.rebuild_percent);
        if (!rule_name.empty()) remark(rule_name, "state", says);
    }
    if (drive.is_foreign == true) remark("drive_foreign", "is_foreign", "foreign configuration");
    const auto* const predicted = exposed ? "drive_predicted_no_redundancy" : "drive_predicted";
    if (drive.smart_alert == true) remark(predicted, "smart_alert", "SMART alert");
    const auto count = [&](const char* rule_name, const char* field, const Integer& value,
                           const char* words) {
        if (value && static_cast<double>(*value) > findings.rule(rule_name).threshold)
            remark(rule_name, field, std::to_string(*value) + " " + words);
    };
    count(predicted, "predicted_failures", drive.predicted_failures, "predicted failures");
    count("drive_media_errors", "media_errors", drive.media_errors, "media errors");
    count("drive_other_errors", "other_errors", drive.other_errors, "other errors");
    if (drive.percentage_used && *drive.percentage_used >= findings.rule("drive_wear").threshold)
        remark("drive_wear", "percentage_used",
               percent_text(*drive.percentage_used) + " of its life used");
    if (drive.available_spare_percent &&
        *drive.available_spare_percent <= findings.rule("drive_spare_low").threshold)
        remark("drive_spare_low", "available_spare_percent",
               percent_text(*drive.available_spare_percent) + " of its spare blocks left");
}

}  // namespace

void judge_storage(const Inventory& inventory, Collector& findings) {
    Redundancy redundancy(inventory);
    for (const auto& controller : inventory.controllers) {
        if (!controller.status) continue;
        const auto rule_name =
            rule_for(kControllerStates, *controller.status).value_or("controller_attention");
        if (rule_name.empty()) continue;
        const auto key = controller.serial.value_or("c" + number_text(controller.number));
        findings.add(key,
                     "Controller " + number_text(controller.number) +
                         (controller.model ? ", " + *controller.model : ""),
                     std::string(rule_name).c_str(), "status " + *controller.status,
                     controller.place);
    }
    for (const auto& volume : inventory.volumes) judge_volume(volume, redundancy, findings);
    judge_topology(inventory, redundancy, findings);
    for (const auto& drive : inventory.drives) judge_drive(drive, redundancy, findings);
    judge_missing_members(inventory, redundancy, findings);
    for (const auto& battery : inventory.batteries) {
        if (!battery.state) continue;
        const auto rule_name = rule_for(kBatteryStates, *battery.state).value_or("battery");
        if (rule_name.empty()) continue;
        findings.add("c" + number_text(battery.controller) + "_battery",
                     "Battery" + at_controller(battery.controller) +
                         (battery.model ? ", " + *battery.model : ""),
                     std::string(rule_name).c_str(), "state " + *battery.state, battery.place);
    }
    for (const auto& enclosure : inventory.enclosures) {
        if (!enclosure.state || rule_for(kEnclosureStates, *enclosure.state)) continue;
        findings.add(
            "c" + number_text(enclosure.controller) + "_e" + number_text(enclosure.number),
            "Enclosure " + number_text(enclosure.number) + at_controller(enclosure.controller),
            "enclosure_state", "state " + *enclosure.state, enclosure.place);
    }
}

}  // namespace qvhost::findings
