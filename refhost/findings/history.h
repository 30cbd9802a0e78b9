// What earlier runs on the same machine add to a verdict: counters that have grown, and since when a finding
// is there.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

// A counter of an entity of the inventory that is judged, which an earlier run read as less.
struct GrownCounter {
    EntityRef entity;
    Growth growth;
};

// Says of drives whose errors grow that they do.
void judge_growth(const inventory::Inventory& inventory, const std::vector<GrownCounter>& grown,
                  Collector& findings);

// Gives each finding what has grown of the entities that it is about.
void add_growth(const std::vector<GrownCounter>& grown, std::vector<Finding>& findings);

struct EarlierVerdict {
    std::string started;  // UTC
    Verdict verdict;
};

// Hands on the next earlier run, the newest first; nothing after the oldest.
using NextEarlier = std::function<std::optional<EarlierVerdict>()>;

// Sets each finding's first_seen: the first of the runs that have it without a gap, or the event that began it
// if that is earlier and no run after it was without the finding. If neither tells it stays empty. A run that could not tell of the finding's
// subsystem is no gap. Runs are asked for only as long as one of the findings needs them.
void add_first_seen(const std::string& now, const NextEarlier& next_earlier,
                    std::vector<Finding>& findings);

}  // namespace qvhost::findings
