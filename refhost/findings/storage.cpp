#include "findings/storage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "findings/states.h"
#include "findings/storage_names.h"

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::Integer;
using inventory::Inventory;
using inventory::Real;
using inventory::TopologyRow;
using inventory::Volume;
using inventory::VolumeMember;

// clang-format off
// Volumes, as storcli, arcconf, sas2ircu, mdadm, zpool and multipath print them.
constexpr auto kVolumeStates = std::to_array<StateRow>({
    {"Optl",                          ""                    },
    {"Optimal",                       ""                    },
    {"Okay (OKY)",                    ""                    },
    {"Optimal (OPT)",                 ""                    },
    {"Online (ONL)",                  ""                    },
    {"OK",                            ""                    },
    {"ONLINE",                        ""                    },
    {"clean",                         ""                    },
    {"active",                        ""                    },
    {"active-idle",                   ""                    },
    {"active (auto-read-only)",       ""                    },  // until it is first written to
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
    {"Inactive, Okay (IOKY)",         "volume_state"        },  // whole; see kMeanings
    {"Inactive, Degraded (IDGD)",     "volume_state"        },
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
    {"recovering (DELAYED)",          "volume_rebuild"      },
    {"recovering (PENDING)",          "volume_rebuild"      },
    {"Initializing (INIT)",           "volume_maintenance"  },
    {"resyncing",                     "volume_maintenance"  },
    {"resyncing (DELAYED)",           "volume_maintenance"  },
    {"resyncing (PENDING)",           "volume_maintenance"  },
    {"checking",                      "volume_maintenance"  },
    {"checking (DELAYED)",            "volume_maintenance"  },
    {"reshaping",                     "volume_maintenance"  },
    {"reshaping (DELAYED)",           "volume_maintenance"  },
});

// States of which the word alone misleads. sas2ircu's ACTIVATE makes an inactive volume active.
struct MeaningRow {
    std::string_view begin;
    const char* words;
};
constexpr auto kMeanings = std::to_array<MeaningRow>({
    {"Inactive, ", ": the controller holds it back until it is activated"},
});

// Whether a volume can be used as its state promises. That it is read-only is somebody's will.
constexpr auto kAccesses = std::to_array<StateRow>({
    {"B",       "volume_state"},
    {"Blocked", "volume_state"},
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
    {"Build/Verify with fix",         "volume_maintenance"  },
    {"Verify with fix",               "volume_maintenance"  },
    {"Initialize",                    "volume_maintenance"  },
    {"Erase",                         "volume_maintenance"  },
    {"Clear",                         "volume_maintenance"  },
    {"Migrate",                       "volume_maintenance"  },
    {"Reconstruction",                "volume_maintenance"  },
    {"OCE",                           "volume_maintenance"  },
    {"Expansion",                     "volume_maintenance"  },
    {"Compression",                   "volume_maintenance"  },
    {"repair",                        "volume_maintenance"  },
    {"trim",                          "volume_maintenance"  },
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
    {"UConf",                        ""                      },
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

struct NvmeWarning {
    int bit;
    const char* rule;  // "" as a predicted failure
    const char* words;
};

// NVM Express, SMART / Health Information: Critical Warning
constexpr auto kNvmeWarnings = std::to_array<NvmeWarning>({
    {0, "drive_spare_low",   "spare blocks are below the drive's threshold"},
    {1, "drive_temperature", "its temperature is beyond its own threshold" },
    {2, "",                  "its reliability is degraded"                 },
    {3, "drive_read_only",   "it is read-only"                             },
    {4, "drive_read_only",   "the backup of its memory failed"             },
    {5, "drive_read_only",   "its persistent memory is read-only or unreliable"},
});

struct SmartctlRow {
    int bit;
    const char* words;
};

// smartctl(8), EXIT STATUS. Bit 3 is the SMART alert; the others tell of the past, or of the tool.
constexpr auto kSmartctl = std::to_array<SmartctlRow>({
    {4, "an attribute that foretells failure is at its threshold"},
    {7, "its log of self tests has errors"                       },
});

// Members of a volume in arcconf's list of segments.
constexpr auto kMemberStates = std::to_array<StateRow>({
    {"Present", ""},
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
    {"ZMM Optimal",  ""                   },
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

std::string percent_text(double percent) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g %%", percent);
    return text;
}

bool at_least_raid6(const inventory::Text& raid) {
    return raid && raid->find('6') != std::string::npos;
}

// "clean, degraded, recovering", "Failed, temperature: 110 C/ 230 F (Abnormal)": several words as one state.
template <class Rows>
std::vector<std::string_view> state_words(const Rows& rows, std::string_view text) {
    std::vector<std::string_view> words;
    if (rule_for(rows, text)) return {text};
    while (true) {
        const auto comma = text.find(", ");
        words.push_back(text.substr(0, comma));
        if (comma == std::string_view::npos) return words;
        text.remove_prefix(comma + 2);
    }
}

// A word of a state mostly stands where the state does.
template <class Entity>
Place place_of_word(const Entity& entity, std::string_view state_word) {
    const auto at = std::find_if(entity.elsewhere.begin(), entity.elsewhere.end(),
                                 [&](const auto& one) { return one.field == state_word; });
    return at == entity.elsewhere.end() ? place_of(entity, "state") : at->place;
}

// "degraded [U_UU]": a software array's members that are there, and those that are not.
std::string_view without_members(std::string_view state) {
    return state.substr(0, state.find(" ["));
}

// How many of its members an array of the kernel can lose, whichever they are; empty: that depends.
std::optional<std::int64_t> can_lose(const inventory::Text& raid, std::int64_t members) {
    if (raid == "raid1") return members - 1;
    if (raid == "raid4" || raid == "raid5") return 1;
    if (raid == "raid6") return 2;
    return std::nullopt;
}

// How many of its drives a group of a pool can lose: "mirror", "raidz2", "draid2:4d:8c:1s".
std::int64_t group_can_lose(std::string_view kind, std::int64_t members) {
    if (kind == "mirror") return members - 1;
    const auto level = kind.find_first_of("123");
    return kind.starts_with("raidz") && level == 5   ? kind[level] - '0'
           : kind.starts_with("draid") && level == 5 ? kind[level] - '0'
                                                     : 1;
}

struct PoolLoss {
    bool of_logs = false, of_data = false;
    bool is_redundant = false;  // none of its groups has lost as many drives as it can
};

PoolLoss loss_of(const Inventory& inventory, const Volume& pool) {
    struct Group {
        std::string_view kind;
        std::int64_t members = 0, lost = 0;
    };
    PoolLoss loss;
    std::map<std::int64_t, Group> groups;
    for (const VolumeMember& member : inventory.volume_members) {
        if (member.controller || member.volume_name != pool.name || member.is_spare == true)
            continue;
        const bool is_lost = member.state != "ONLINE";
        if (is_lost) (member.group == "log" ? loss.of_logs : loss.of_data) = true;
        if (!member.span) continue;
        auto& group = groups[*member.span];
        group.kind = member.group;
        ++group.members;
        if (is_lost) ++group.lost;
    }
    loss.is_redundant =
        !groups.empty() && std::all_of(groups.begin(), groups.end(), [](const auto& one) {
            const auto& [kind, members, lost] = one.second;
            return lost == 0 || lost < group_can_lose(kind, members);
        });
    return loss;
}

bool is_pool(const Volume& volume) {
    return !volume.controller && !volume.device;  // arrays and maps have one
}

// The rule for a degraded pool. Without its log it loses nothing that was written.
std::string_view rule_for_pool(const Inventory& inventory, const Volume& pool) {
    const auto loss = loss_of(inventory, pool);
    if (loss.of_logs && !loss.of_data) return "volume_state";
    return loss.is_redundant ? "volume_degraded" : "volume_no_redundancy";
}

// The rule for a degraded array whose members that are there its state shows.
std::optional<std::string_view> rule_for_members(const Volume& volume, std::string_view members) {
    const auto lost = std::count(members.begin(), members.end(), '_');
    const auto most = can_lose(volume.raid, lost + std::count(members.begin(), members.end(), 'U'));
    if (lost == 0 || !most) return std::nullopt;
    if (lost > *most) return "volume_offline";
    return lost == *most ? "volume_no_redundancy" : "volume_degraded";
}

// Whether one more drive may be lost. RAID 6 survives the loss of a second drive, unless the tool has a word of
// its own for that.
bool has_redundancy(const Volume& volume, std::string_view state) {
    return at_least_raid6(volume.raid) && !same_word(state, "Dgrd");
}

std::string meaning_of(std::string_view state) {
    const auto* const row =
        std::find_if(kMeanings.begin(), kMeanings.end(),
                     [&](const MeaningRow& one) { return state.starts_with(one.begin); });
    return row == kMeanings.end() ? "" : row->words;
}

void judge_volume(const Inventory& inventory, const Volume& volume, Redundancy& redundancy,
                  Collector& findings) {
    const auto remark = [&](std::string_view rule_name, const char* field,
                            const std::string& says) {
        findings.add(subject_of(inventory, volume), rule_name, says, place_of(volume, field));
    };
    if (volume.state) {
        for (const auto state : state_words(kVolumeStates, *volume.state)) {
            auto rule_name =
                rule_for(kVolumeStates, without_members(state)).value_or("volume_state");
            const auto shown =
                rule_for_members(volume, state.substr(without_members(state).size()));
            if (rule_name == "volume_no_redundancy")
                rule_name = is_pool(volume)
                                ? rule_for_pool(inventory, volume)
                                : shown.value_or(has_redundancy(volume, state) ? "volume_degraded"
                                                                               : rule_name);
            if (rule_name == "volume_no_redundancy" || rule_name == "volume_offline")
                redundancy.note_lost(volume);
            if (!rule_name.empty())
                findings.add(subject_of(inventory, volume), rule_name,
                             "state " + *volume.state + meaning_of(*volume.state),
                             place_of_word(volume, state));
        }
    }
    if (volume.access && rule_for(kAccesses, *volume.access))
        remark("volume_state", "access", "access " + *volume.access + ", blocked");
    if (volume.operation) {
        const auto found = rule_for(kOperations, *volume.operation);
        std::string says = *volume.operation;
        if (volume.progress_percent) says += " at " + percent_text(*volume.progress_percent);
        if (const auto rule_name = found.value_or("volume_operation"); !rule_name.empty())
            remark(rule_name, "operation", says);
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
        if (!row.state) continue;
        const auto rule_name = rule_for(kTopologyStates, *row.state).value_or("topology_state");
        if (rule_name.empty()) continue;
        if (rule_name != "topology_state") redundancy.note_lost(row);
        if (told.contains({row.controller, row.drive_group})) continue;
        const auto group = number_text(row.drive_group);
        findings.add({controller_key(row.tool, row.controller) + "_dg" + group,
                      "Drive group " + group + at_controller(row.controller)},
                     rule_name,
                     "topology says " + *row.state + (row.type ? " for " + *row.type : ""),
                     row.place);
    }
}

bool tells_warnings(const Drive& drive) {
    return std::any_of(kNvmeWarnings.begin(), kNvmeWarnings.end(), [&](const NvmeWarning& one) {
        return drive.nvme_warnings.value_or(0) >> one.bit & 1;
    });
}

// Below the drive's own threshold. One that tells none says itself whether its spare blocks are few; of
// one that says neither, the rule's threshold counts.
bool has_low_spare(const Drive& drive, double threshold) {
    if (!drive.available_spare_percent) return false;
    if (drive.available_spare_threshold)
        return *drive.available_spare_percent < *drive.available_spare_threshold;
    return !drive.nvme_warnings && *drive.available_spare_percent <= threshold;
}

// A count that stays the same for long is no news.
void judge_media_errors(const Inventory& inventory, const Drive& drive, const Past& past,
                        Collector& findings) {
    const auto& rule = findings.rule("drive_media_errors");
    if (!drive.media_errors || static_cast<double>(*drive.media_errors) <= rule.threshold) return;
    constexpr double kSeconds = kNewsDays * 24.0 * 3600;
    const auto since = past.unchanged_for(kSeconds, ref_to(inventory, drive), "media_errors");
    auto says = std::to_string(*drive.media_errors) + " media errors";
    if (!since.empty()) says += ", none new for " + std::to_string(kNewsDays) + " days";
    findings.add(subject_of(inventory, drive),
                 Remark{&rule,
                        says,
                        {place_of(drive, "media_errors")},
                        since.empty() ? rule.severity : Severity::notice});
}

void judge_drive(const Inventory& inventory, const Drive& drive, const Redundancy& redundancy,
                 const Past& past, Collector& findings) {
    const auto remark = [&](std::string_view rule_name, std::string_view field,
                            const std::string& says) {
        findings.add(subject_of(inventory, drive), rule_name, says, place_of(drive, field));
    };
    const bool exposed = drive.pool_part.empty() && redundancy.is_lost_for(drive);
    const auto of_pool = drive.pool_part.empty() ? "" : ", " + drive.pool_part + " of a pool";
    if (drive.state) {
        auto rule_name = rule_for(kDriveStates, *drive.state).value_or("drive_state");
        if (rule_name == "drive_failed" && exposed) rule_name = "drive_failed_no_redundancy";
        if (!rule_name.empty()) remark(rule_name, "state", "state " + *drive.state + of_pool);
        if (!rule_name.empty() && drive.rebuild_percent)
            remark(rule_name, "rebuild_percent",
                   "rebuilt to " + percent_text(*drive.rebuild_percent));
    }
    if (drive.temperature_state)
        remark("drive_temperature", "temperature_celsius",
               "temperature " + *drive.temperature_state);
    if (drive.is_foreign == true) remark("drive_foreign", "is_foreign", "foreign configuration");
    const auto* const predicted = exposed ? "drive_predicted_no_redundancy" : "drive_predicted";
    // The alert of an NVMe drive is the sum of its warnings, which say it better.
    if (drive.smart_alert == true && !tells_warnings(drive))
        remark(predicted, "smart_alert", "SMART alert");
    for (const auto& [bit, warning_rule, words] : kNvmeWarnings) {
        if (drive.nvme_warnings.value_or(0) >> bit & 1)
            remark(*warning_rule == '\0' ? predicted : warning_rule, "nvme_warnings", words);
    }
    for (const auto& [bit, words] : kSmartctl) {
        if (drive.smartctl_status.value_or(0) >> bit & 1)
            remark(predicted, "smartctl_status", words);
    }
    const auto count = [&](const char* rule_name, const char* field, const Integer& value,
                           const char* words) {
        if (value && static_cast<double>(*value) > findings.rule(rule_name).threshold)
            remark(rule_name, field, std::to_string(*value) + " " + words);
    };
    count(predicted, "predicted_failures", drive.predicted_failures, "predicted failures");
    judge_media_errors(inventory, drive, past, findings);
    count("drive_other_errors", "other_errors", drive.other_errors, "other errors");
    count("drive_shielded", "shield_counter", drive.shield_counter, "times shielded");
    count("drive_reallocated", "reallocated_sectors", drive.reallocated_sectors,
          drive.interface == "SAS" ? "grown defects" : "reallocated sectors");
    if (drive.percentage_used && *drive.percentage_used >= findings.rule("drive_wear").threshold)
        remark("drive_wear", "percentage_used",
               percent_text(*drive.percentage_used) + " of its life used");
    if (has_low_spare(drive, findings.rule("drive_spare_low").threshold))
        remark("drive_spare_low", "available_spare_percent",
               percent_text(*drive.available_spare_percent) + " of its spare blocks left");
}

// Drives that a controller's topology tells and no list of drives, or not so: one is missing there. The
// state of a software array tells of its missing drives.
void judge_members(const Inventory& inventory, const Redundancy& redundancy, Collector& findings) {
    std::set<std::pair<std::string, std::int64_t>> told;  // one line stands for several volumes
    for (const VolumeMember& member : inventory.volume_members) {
        if (!member.state || !member.controller) continue;
        auto rule_name =
            rule_for(kMemberStates, *member.state)
                .value_or(rule_for(kDriveStates, *member.state).value_or("drive_state"));
        if (rule_name.empty()) continue;
        const Drive* const drive = member.drive ? &inventory.drives[*member.drive] : nullptr;
        if (drive && drive->state &&
            !rule_for(kDriveStates, *drive->state).value_or("drive_state").empty())
            continue;
        if (!told.insert({member.place.capture, member.place.line}).second) continue;
        const bool exposed =
            redundancy.is_lost_in(member) || (drive && redundancy.is_lost_for(*drive));
        if (rule_name == "drive_failed" && exposed) rule_name = "drive_failed_no_redundancy";
        findings.add(drive ? subject_of(inventory, *drive) : missing_drive(member), rule_name,
                     "topology says " + *member.state, member.place);
    }
}

// A volume whose cache is written back even without a battery: "AWB", "RAWBD".
const Volume* forced_write_back(const Inventory& inventory, const inventory::Battery& battery) {
    const auto found =
        std::find_if(inventory.volumes.begin(), inventory.volumes.end(), [&](const Volume& volume) {
            return volume.controller == battery.controller && volume.cache &&
                   volume.cache->find("AWB") != std::string::npos;
        });
    return found == inventory.volumes.end() ? nullptr : &*found;
}

}  // namespace

bool is_rebuilt(const Volume& volume) {
    return volume.operation && rule_for(kOperations, *volume.operation) == "volume_rebuild";
}

Redundancy judge_storage(const Inventory& inventory, const Past& past, Collector& findings) {
    Redundancy redundancy(inventory);
    for (const auto& controller : inventory.controllers) {
        if (!controller.status) continue;
        for (const auto word : state_words(kControllerStates, *controller.status)) {
            const auto rule_name =
                rule_for(kControllerStates, word).value_or("controller_attention");
            if (rule_name.empty()) continue;
            findings.add(
                {controller.serial.value_or(controller_key(controller.tool, controller.number)),
                 "Controller " + number_text(controller.number) +
                     (controller.model ? ", " + *controller.model : ""),
                 {ref_to(inventory, controller)}},
                rule_name, "status " + *controller.status, place_of_word(controller, word));
        }
    }
    for (const auto& volume : inventory.volumes)
        judge_volume(inventory, volume, redundancy, findings);
    judge_topology(inventory, redundancy, findings);
    for (const auto& drive : inventory.drives)
        judge_drive(inventory, drive, redundancy, past, findings);
    judge_members(inventory, redundancy, findings);
    for (const auto& battery : inventory.batteries) {
        if (!battery.state) continue;
        const auto* const forced = forced_write_back(inventory, battery);
        for (const auto word : state_words(kBatteryStates, *battery.state)) {
            auto rule_name = rule_for(kBatteryStates, word).value_or("battery");
            if (rule_name.empty()) continue;
            std::string says = "state " + *battery.state;
            if (rule_name == "battery" && forced) {
                rule_name = "battery_write_back_forced";
                says += "; cache " + *forced->cache + " of volume " + number_text(forced->number);
            }
            findings.add({controller_key(battery.tool, battery.controller) + "_battery",
                          "Battery" + at_controller(battery.controller) +
                              (battery.model ? ", " + *battery.model : ""),
                          {ref_to(inventory, battery)}},
                         rule_name, says, place_of_word(battery, word));
        }
    }
    for (const auto& enclosure : inventory.enclosures) {
        if (!enclosure.state) continue;
        for (const auto word : state_words(kEnclosureStates, *enclosure.state)) {
            if (rule_for(kEnclosureStates, word)) continue;
            findings.add(
                {controller_key(enclosure.tool, enclosure.controller) + "_e" +
                     number_text(enclosure.number),
                 "Enclosure " + number_text(enclosure.number) + at_controller(enclosure.controller),
                 {ref_to(inventory, enclosure)}},
                "enclosure_state", "state " + *enclosure.state, place_of_word(enclosure, word));
        }
    }
    return redundancy;
}

}  // namespace qvhost::findings
