#include "findings/redundancy.h"

#include <algorithm>
#include <iterator>

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::TopologyRow;
using inventory::Volume;
using inventory::VolumeMember;

// "RAID0", "raid0", "0", "RAID00"
bool is_raid0(const inventory::Text& raid) {
    if (!raid) return false;
    std::string digits;
    std::copy_if(raid->begin(), raid->end(), std::back_inserter(digits),
                 [](char c) { return c >= '0' && c <= '9'; });
    return !digits.empty() && digits.find_first_not_of('0') == std::string::npos;
}

}  // namespace

Redundancy::Redundancy(const inventory::Inventory& inventory) {
    for (const auto& member : inventory.volume_members) {
        if (member.drive) members_[&inventory.drives[*member.drive]].push_back(&member);
    }
    for (const auto& volume : inventory.volumes) {
        if (volume.drive_group) has_groups_.insert(controller_of(volume));
        if (is_raid0(volume.raid)) add(volume, without_);
    }
    for (const auto& drive : inventory.drives) {
        if (drive.drive_group) has_groups_.insert(controller_of(drive));
    }
}

void Redundancy::add(const Volume& volume, Places& places) {
    places.volumes.insert(volume.controller ? Name{controller_of(volume), volume.number, {}}
                                            : Name{{}, {}, volume.name});
    if (volume.drive_group) places.groups.insert(group_of(volume));
}

void Redundancy::note_lost(const Volume& volume) {
    has_lost_.insert(controller_of(volume));
    add(volume, lost_);
}

void Redundancy::note_lost(const TopologyRow& row) {
    has_lost_.insert(controller_of(row));
    lost_.groups.insert(group_of(row));
}

// Where the tool says nothing of members, each of its drives may be one.
bool Redundancy::is_lost_for(const Drive& drive) const {
    if (drive.drive_group || members_.contains(&drive)) return is_one_of(drive, lost_);
    return !has_groups_.contains(controller_of(drive)) && has_lost_.contains(controller_of(drive));
}

bool Redundancy::is_lacking_for(const Drive& drive) const {
    return is_lost_for(drive) || is_one_of(drive, without_);
}

bool Redundancy::is_one_of(const Drive& drive, const Places& places) const {
    if (drive.drive_group) return places.groups.contains(group_of(drive));
    const auto known = members_.find(&drive);
    return known != members_.end() &&
           std::any_of(known->second.begin(), known->second.end(),
                       [&](const VolumeMember* member) { return is_in(*member, places); });
}

bool Redundancy::is_in(const VolumeMember& member, const Places& places) {
    const bool is_known =
        member.controller ? member.volume.has_value() : member.volume_name.has_value();
    const auto name = member.controller ? Name{controller_of(member), member.volume, {}}
                                        : Name{{}, {}, member.volume_name};
    return (is_known && places.volumes.contains(name)) ||
           (member.drive_group && places.groups.contains(group_of(member)));
}

}  // namespace qvhost::findings
