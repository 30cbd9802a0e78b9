// Finishes a report once its store has all records.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "qvhost/finish/reasons.h"
#include "store/store.h"

namespace qvhost {

// How a collection came to its end.
struct Ending {
    std::string problem = {};  // for people; empty: by itself
    // What stopped each lane, from the first one on: "user" or "run"; empty, or no text: neither.
    std::vector<std::string> stopped_by = {};
    std::set<std::string> broken_off = {};  // as CollectionState has it, of all lanes
};

// Completes the store, which has the declarations of the tables, with what the captures and the command log
// tell (the machine, the commands, why tables are empty or partial, whether the collection is complete), and
// writes the views that people and programs read: report.json and the page.
void finish_report(Store& store, const LogDir& dir, const ToolPlaces& tools, const Ending& ending);

}  // namespace qvhost
