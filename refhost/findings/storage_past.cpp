#include "findings/storage_past.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "findings/storage.h"
#include "findings/storage_names.h"

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::Inventory;
using inventory::Volume;
using inventory::VolumeMember;

// The rules for a counter of drives that grows.
struct GrowthRow {
    std::string_view field;
    const char* rule;
    const char* rule_without_redundancy;
    const char* words;
};
// clang-format off
constexpr auto kGrowth = std::to_array<GrowthRow>({
    {"media_errors",   "drive_media_errors_grow", "drive_media_errors_grow_no_redundancy", "media errors"  },
    {"other_errors",   "drive_other_errors_grow", "drive_other_errors_grow",               "other errors"  },
    {"shield_counter", "drive_shielded_grow",     "drive_shielded_grow",                   "times shielded"},
});
// clang-format on

void judge_growth(const Inventory& inventory, const Past& past, const Redundancy& redundancy,
                  Collector& findings) {
    for (const auto& [entity, growth] : past.grown) {
        const auto place = static_cast<std::size_t>(entity.number) - 1;
        const auto& field = growth.field;
        const auto* const row =
            std::find_if(kGrowth.begin(), kGrowth.end(),
                         [&](const GrowthRow& one) { return one.field == field; });
        if (entity.kind != "drives" || row == kGrowth.end() || place >= inventory.drives.size())
            continue;
        const auto& drive = inventory.drives[place];
        const auto* const rule =
            redundancy.is_lacking_for(drive) ? row->rule_without_redundancy : row->rule;
        const auto by = static_cast<double>(growth.now - growth.before);
        if (by <= findings.rule(rule).threshold) continue;
        findings.add(subject_of(inventory, drive), rule,
                     std::string(row->words) + " grew from " + std::to_string(growth.before) +
                         " to " + std::to_string(growth.now) + " since " + growth.since,
                     place_of(drive, field));
    }
}

// A rebuild of which no more is done than was hours ago.
template <class Entity>
void judge_rebuild(const Inventory& inventory, const Past& past, const Entity& one,
                   const char* field, const char* rule, Collector& findings) {
    constexpr double kHour = 3600;
    const auto since =
        past.unchanged_for(findings.rule(rule).threshold * kHour, ref_to(inventory, one), field);
    if (!since.empty())
        findings.add(subject_of(inventory, one), rule, "rebuilt no further since " + since,
                     place_of(one, field));
}

bool is_in_array(const Inventory& inventory, std::size_t place) {
    const auto& members = inventory.volume_members;
    return inventory.drives[place].drive_group ||
           std::any_of(members.begin(), members.end(), [&](const VolumeMember& member) {
               return member.drive == place && member.is_spare != true;
           });
}

// A controller whose spares have taken the places of other drives, so that it has none left.
void judge_spares(const Inventory& inventory, const Past& past, Collector& findings) {
    for (const auto place : past.former_spares) {
        if (place >= inventory.drives.size() || !is_in_array(inventory, place)) continue;
        const auto& drive = inventory.drives[place];
        const auto& drives = inventory.drives;
        const bool has_another = std::any_of(drives.begin(), drives.end(), [&](const Drive& other) {
            return other.spare && other.controller == drive.controller && other.tool == drive.tool;
        });
        if (has_another) continue;
        auto subject = subject_of(inventory, drive);
        subject.words = "Hot spares" + at_controller(drive.controller);
        subject.key = controller_key(drive.tool, drive.controller) + "_spares";
        findings.add(subject, "spare_in_use",
                     "drive " + drive_place(drive) + " is in use, and none is left", drive.place);
    }
}

// The same of a pool, which says so itself.
void judge_pool_spares(const Inventory& inventory, Collector& findings) {
    std::map<std::string, std::pair<const VolumeMember*, bool>> pools;  // in use; one is left
    for (const auto& member : inventory.volume_members) {
        if (member.controller || member.is_spare != true || !member.volume_name) continue;
        auto& [in_use, is_left] = pools[*member.volume_name];
        if (member.state == "INUSE") in_use = &member;
        if (member.state == "AVAIL") is_left = true;
    }
    for (const auto& [pool, spares] : pools) {
        const auto& [in_use, is_left] = spares;
        if (!in_use || is_left) continue;
        findings.add({pool + "_spares", "Hot spares of pool " + pool}, "spare_in_use",
                     in_use->device.value_or("a drive") + " is in use, and none is left",
                     in_use->place);
    }
}

}  // namespace

void judge_storage_past(const Inventory& inventory, const Past& past, const Redundancy& redundancy,
                        Collector& findings) {
    judge_growth(inventory, past, redundancy, findings);
    for (const auto& drive : inventory.drives)
        judge_rebuild(inventory, past, drive, "rebuild_percent", "drive_rebuild_still", findings);
    for (const auto& volume : inventory.volumes) {
        if (is_rebuilt(volume))
            judge_rebuild(inventory, past, volume, "progress_percent", "volume_rebuild_still",
                          findings);
    }
    judge_spares(inventory, past, findings);
    judge_pool_spares(inventory, findings);
}

}  // namespace qvhost::findings
