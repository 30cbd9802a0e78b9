// What earlier runs on the same machine say of the inventory that is judged.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "findings/finding.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

// A counter of an entity of the inventory that is judged, which an earlier run read as less.
struct GrownCounter {
    EntityRef entity;
    Growth growth;
};

struct Past {
    std::string started = {};  // when the run that is judged began, UTC
    std::vector<GrownCounter> grown = {};
    std::vector<Unchanged> unchanged = {};
    std::set<std::size_t> former_spares =
        {};  // which of Inventory::drives were hot spares and are none now

    // Since when the field has had its value, if that is for so long; else empty.
    std::string unchanged_for(double seconds, const EntityRef& entity,
                              std::string_view field) const;
};

struct EarlierRun {
    std::string started;  // UTC
    inventory::Inventory inventory;
    Verdict verdict;
};

// Media errors and the progress of rebuilds that the earlier run read as well: which of them have not changed, and since
// when.
std::vector<Unchanged> unchanged_since(const EarlierRun& earlier,
                                       const inventory::Inventory& inventory);

// Which of Inventory::drives were hot spares in the earlier run, or were found to be one in use, and are none now.
std::set<std::size_t> former_spares_of(const EarlierRun& earlier,
                                       const inventory::Inventory& inventory);

}  // namespace qvhost::findings
