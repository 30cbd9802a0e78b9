// Which modules are asked side by side.
#pragma once

#include <string>
#include <vector>

#include "qvhost/base/declared_tables.h"
#include "qvhost/base/options.h"
#include "qvhost/collect/offer.h"

namespace qvhost {

struct LaneModule {
    std::string name;
    std::string display;  // for people
    bool operator==(const LaneModule&) const = default;
};

// The modules that are asked one after another.
using Lane = std::vector<LaneModule>;

// The selected modules in their order, cut where nothing before the cut shares a tool, the BMC or a capture with
// anything behind it, as the tables are declared. A module that runs no tool belongs to the lane before it. There is one lane
// alone if the user wants that, in a replay, if a module has a table that is not declared, and with --also, whose
// operations go on with what the modules have left in their process. Never more than kMostLanes, never none.
std::vector<Lane> lanes_of(const Offer& offer, const CollectOptions& options,
                           const std::vector<DeclaredTable>& declared);

}  // namespace qvhost
