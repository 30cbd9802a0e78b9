// The volumes and drive groups of which nothing more may be lost.
#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "inventory/inventory.h"

namespace qvhost::findings {

// Filled as volumes and topologies are judged. The inventory must outlive it, unchanged. Each tool counts
// controllers for itself.
class Redundancy {
public:
    explicit Redundancy(const inventory::Inventory& inventory);

    void note_lost(const inventory::Volume& volume);
    void note_lost(const inventory::TopologyRow& row);

    // Whether the next drive that fails beside this one takes data with it.
    bool is_lost_for(const inventory::Drive& drive) const;
    bool is_lost_in(const inventory::VolumeMember& member) const { return is_in(member, lost_); }

    // The same, or it is a drive of a volume that never had any: RAID 0.
    bool is_lacking_for(const inventory::Drive& drive) const;

private:
    using ControllerName = std::pair<std::string, inventory::Integer>;  // the tool, its number
    using Group = std::pair<ControllerName, inventory::Integer>;
    using Name =  // a controller's number; else a name
        std::tuple<ControllerName, inventory::Integer, inventory::Text>;
    struct Places {
        std::set<Group> groups;
        std::set<Name> volumes;
    };

    template <class Entity>
    static ControllerName controller_of(const Entity& entity) {
        return entity.controller ? ControllerName{entity.tool, entity.controller}
                                 : ControllerName{};
    }
    template <class Entity>
    static Group group_of(const Entity& entity) {
        return {controller_of(entity), entity.drive_group};
    }
    static void add(const inventory::Volume& volume, Places& places);

    bool is_one_of(const inventory::Drive& drive, const Places& places) const;
    static bool is_in(const inventory::VolumeMember& member, const Places& places);

    std::map<const inventory::Drive*, std::vector<const inventory::VolumeMember*>> members_;
    std::set<ControllerName> has_groups_, has_lost_;
    Places lost_, without_;
};

}  // namespace qvhost::findings
