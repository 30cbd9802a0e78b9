// Which events tell of an entity.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "findings/finding.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

class EventsAbout {
public:
    // The inventory must outlive it.
    EventsAbout(const inventory::Inventory& inventory, std::vector<EntityRef> entities)
        : inventory_(&inventory), entities_(std::move(entities)) {}

    // Whether it tells of one of the entities: of a sensor by its name or number, of a drive and a volume
    // behind a controller by their place there.
    bool operator()(const inventory::Event& event);

private:
    bool tells(const inventory::Event& event) const;

    const inventory::Inventory* inventory_;
    std::vector<EntityRef> entities_;
    std::map<std::pair<std::string, std::string>, bool> known_;  // by source and subject
};

}  // namespace qvhost::findings
