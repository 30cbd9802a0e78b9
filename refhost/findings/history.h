// What earlier runs on the same machine add to findings: what has grown, and since when they are there.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "findings/finding.h"
#include "findings/past.h"

namespace qvhost::findings {

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
