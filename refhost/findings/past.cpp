#include "findings/past.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <map>

#include "findings/collector.h"
#include "findings/storage_names.h"
#include "text/utc.h"

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::Inventory;
using inventory::Volume;

// Where it says something that a value stays the same.
bool is_told(const inventory::Integer& count) { return count.value_or(0) > 0; }
bool is_told(const inventory::Real& percent) { return percent.has_value(); }

// Since when the entity's field had the value that the earlier run read.
std::string began(const EarlierRun& earlier, const EntityRef& entity, std::string_view field) {
    const auto& known = earlier.verdict.unchanged;
    const auto found = std::find_if(known.begin(), known.end(), [&](const Unchanged& one) {
        return one.entity == entity && one.field == field;
    });
    return found == known.end() ? earlier.started : found->since;
}

// By what an entity is found in another run: a report does not keep whose numbers it has.
std::string key_of(Drive drive) {
    drive.tool.clear();
    return drive_key(drive);
}
std::string key_of(Volume volume) {
    volume.tool.clear();
    return volume_key(volume);
}

template <class Entity>
std::map<std::string, const Entity*> by_key(const std::vector<Entity>& list) {
    std::map<std::string, const Entity*> entities;
    for (const auto& one : list) entities.emplace(key_of(one), &one);
    return entities;
}

template <class Entity, class Value>
void find_unchanged(const EarlierRun& earlier, const Inventory& inventory,
                    std::vector<Entity> Inventory::*list, Value Entity::*member, const char* field,
                    std::vector<Unchanged>& unchanged) {
    const auto before = by_key(earlier.inventory.*list);
    for (const Entity& one : inventory.*list) {
        if (!is_told(one.*member)) continue;
        const auto found = before.find(key_of(one));
        if (found == before.end() || found->second->*member != one.*member) continue;
        unchanged.push_back({ref_to(inventory, one), field,
                             began(earlier, ref_to(earlier.inventory, *found->second), field)});
    }
}

}  // namespace

std::string Past::unchanged_for(double seconds, const EntityRef& entity,
                                std::string_view field) const {
    for (const auto& one : unchanged) {
        if (one.entity != entity || one.field != field) continue;
        const auto now = seconds_of_utc(started), then = seconds_of_utc(one.since);
        if (now && then && std::difftime(*now, *then) >= seconds) return one.since;
    }
    return "";
}

std::vector<Unchanged> unchanged_since(const EarlierRun& earlier, const Inventory& inventory) {
    std::vector<Unchanged> unchanged;
    find_unchanged(earlier, inventory, &Inventory::drives, &Drive::media_errors, "media_errors",
                   unchanged);
    find_unchanged(earlier, inventory, &Inventory::drives, &Drive::rebuild_percent,
                   "rebuild_percent", unchanged);
    find_unchanged(earlier, inventory, &Inventory::volumes, &Volume::progress_percent,
                   "progress_percent", unchanged);
    return unchanged;
}

std::set<std::size_t> former_spares_of(const EarlierRun& earlier, const Inventory& inventory) {
    std::set<std::string> spares;
    for (const auto& drive : earlier.inventory.drives) {
        if (drive.spare) spares.insert(key_of(drive));
    }
    for (const auto& finding : earlier.verdict.findings) {
        if (finding.rule != "spare_in_use") continue;
        for (const auto& [kind, number] : finding.entities) {
            const auto place = static_cast<std::size_t>(number) - 1;
            if (kind == "drives" && place < earlier.inventory.drives.size())
                spares.insert(key_of(earlier.inventory.drives[place]));
        }
    }
    std::set<std::size_t> former;
    for (std::size_t i = 0; i < inventory.drives.size(); ++i) {
        const auto& drive = inventory.drives[i];
        if (!drive.spare && spares.contains(key_of(drive))) former.insert(i);
    }
    return former;
}

}  // namespace qvhost::findings
