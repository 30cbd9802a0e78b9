// The parent of the collecting child: starts it, watches it, ends it.
#pragma once

#include <string>

#include "qvhost/base/options.h"
#include "qvhost/collect/progress.h"
#include "qvhost/collect/stage.h"
#include "qvhost/finish/finish_report.h"
#include "qvhost/finish/journal_importer.h"

namespace qvhost {

// Starts the collecting child and watches it to its end, taking what it journals. Returns why the
// collection is incomplete; empty: it is complete. A signal to end (SIGINT, SIGTERM, SIGHUP) ends the
// child with all its tools; a second one ends this program at once.
Ending supervise(const CollectOptions& options, const Stage& stage, JournalImporter& importer,
                 Progress& progress);

}  // namespace qvhost
