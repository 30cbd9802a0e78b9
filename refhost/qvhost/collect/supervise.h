// The parent of the collecting children, one a lane: starts them, watches them, ends them.
#pragma once

#include <vector>

#include "qvhost/base/options.h"
#include "qvhost/collect/lanes.h"
#include "qvhost/collect/progress.h"
#include "qvhost/collect/stage.h"
#include "qvhost/finish/finish_report.h"
#include "qvhost/finish/journal_importer.h"

namespace qvhost {

// Starts a collecting child for each lane and watches them to their end, taking what they journal. Returns why the
// collection is incomplete; empty: it is complete. A child that dies, or whose module takes too long, is ended with
// its tools, and the others go on. A signal to end (SIGINT, SIGTERM, SIGHUP) ends all of them; a second one ends this
// program at once.
Ending supervise(const CollectOptions& options, const std::vector<Lane>& lanes, const Stage& stage,
                 JournalImporter& importer, Progress& progress);

}  // namespace qvhost
