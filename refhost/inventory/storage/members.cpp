#include "inventory/storage/members.h"

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace qvhost::inventory {

namespace {

// The drives behind controllers, by what their tool calls them.
class DrivesOfTools {
public:
    explicit DrivesOfTools(const std::vector<Drive>& drives) : drives_(drives) {
        for (std::size_t i = 0; i < drives.size(); ++i) {
            const Drive& drive = drives[i];
            if (!drive.controller) continue;
            const auto add = [&](Key key) { indexes_.emplace(std::move(key), i); };
            if (drive.serial) add({drive.tool, drive.controller, *drive.serial, {}, {}});
            if (drive.slot) {
                add({drive.tool, drive.controller, "", drive.enclosure, drive.slot});
            } else if (drive.device_id) {
                add({drive.tool, drive.controller, "", {}, drive.device_id});
            }
        }
    }

    std::optional<std::size_t> find(const VolumeMember& member) const {
        const auto at = [&](const std::string& serial, const Integer& enclosure,
                            const Integer& number) -> std::optional<std::size_t> {
            const auto found =
                indexes_.find({member.tool, member.controller, serial, enclosure, number});
            if (found == indexes_.end()) return std::nullopt;
            // Another serial number in that place: another drive was put there.
            const auto& there = drives_[found->second].serial;
            if (member.serial && there && *member.serial != *there) return std::nullopt;
            return found->second;
        };
        if (member.serial) {
            if (const auto index = at(*member.serial, {}, {})) return index;
        }
        if (member.slot) return at("", member.enclosure, member.slot);
        if (!member.device_id) return std::nullopt;
        const auto index = at("", {}, member.device_id);
        return index && drives_[*index].slot ? std::nullopt : index;
    }

private:
    // A serial number; else an enclosure and a slot, or the number of a drive without a slot.
    using Key = std::tuple<std::string, Integer, std::string, Integer, Integer>;
    const std::vector<Drive>& drives_;
    std::map<Key, std::size_t> indexes_;
};

// Drives whose own line says their group, and that no topology lists.
void add_grouped_drives(Inventory& inventory) {
    std::vector<bool> is_member(inventory.drives.size());
    for (const auto& member : inventory.volume_members) {
        if (member.drive && member.controller) is_member[*member.drive] = true;
    }
    for (std::size_t i = 0; i < inventory.drives.size(); ++i) {
        const Drive& drive = inventory.drives[i];
        if (is_member[i] || !drive.controller || !drive.drive_group) continue;
        VolumeMember member;
        member.place = drive.place;
        member.controller = drive.controller;
        member.drive_group = drive.drive_group;
        member.is_spare = drive.spare.has_value();
        member.state = drive.state;
        member.tool = drive.tool;
        member.drive = i;
        inventory.volume_members.push_back(std::move(member));
    }
}

template <class Value>
void fill(std::optional<Value>& value, const std::optional<Value>& other) {
    if (!value) value = other;
}

void take_names(VolumeMember& member, const Drive& drive) {
    if (member.controller) {
        fill(member.enclosure, member.slot ? std::nullopt : drive.enclosure);
        fill(member.slot, drive.slot);
        fill(member.device_id, drive.device_id);
    }
    fill(member.device, drive.device);
    if (drive.serial) member.serial = drive.serial;  // some tools print only the beginning of it
}

// Each volume of a group has the group's drives as its members.
void stand_for_volumes(Inventory& inventory) {
    using Number = std::tuple<std::string, Integer, Integer>;
    std::map<Number, std::vector<const Volume*>> of_group;
    std::map<Number, const Volume*> by_number;
    for (const Volume& volume : inventory.volumes) {
        if (!volume.controller) continue;
        if (volume.drive_group)
            of_group[{volume.tool, volume.controller, volume.drive_group}].push_back(&volume);
        by_number.emplace(Number{volume.tool, volume.controller, volume.number}, &volume);
    }
    const auto stand_for = [](VolumeMember& member, const Volume& volume) {
        member.volume = volume.number;
        fill(member.volume_name, volume.name);
        fill(member.drive_group, volume.drive_group);
    };
    constexpr std::size_t kMost = 100000;  // rows: more comes of numbers read wrong
    std::vector<VolumeMember> all;
    for (VolumeMember& member : inventory.volume_members) {
        if (member.volume) {
            const auto at = by_number.find({member.tool, member.controller, member.volume});
            if (at != by_number.end()) stand_for(member, *at->second);
        } else if (member.controller && member.drive_group) {
            const auto at = of_group.find({member.tool, member.controller, member.drive_group});
            if (at != of_group.end() && all.size() < kMost) {
                for (const Volume* volume : at->second) {
                    all.push_back(member);
                    stand_for(all.back(), *volume);
                    if (all.size() >= kMost) break;
                }
                continue;
            }
        }
        all.push_back(std::move(member));
    }
    inventory.volume_members = std::move(all);
}

}  // namespace

void join_members(Inventory& inventory, const FindDevice& find_device) {
    const DrivesOfTools drives(inventory.drives);
    for (VolumeMember& member : inventory.volume_members) {
        if (member.controller) {
            member.drive = drives.find(member);
            continue;
        }
        Drive named;
        named.device = member.device;
        named.serial = member.serial;
        named.wwn = member.wwn;
        member.drive = find_device(named);
    }
    add_grouped_drives(inventory);
    for (VolumeMember& member : inventory.volume_members) {
        if (member.drive) take_names(member, inventory.drives[*member.drive]);
    }
    stand_for_volumes(inventory);
}

}  // namespace qvhost::inventory
