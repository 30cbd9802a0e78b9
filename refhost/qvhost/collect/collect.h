// A collection from its beginning to its report.
#pragma once

#include "qvhost/base/options.h"
#include "qvhost/collect/stage.h"

namespace qvhost {

// Runs a collection and makes its report. Returns the exit status: 0 if it is complete, 3 if it is
// incomplete, 1 if not even its first module could be asked.
// Throws MachineBusy if another run holds the machine's lock, Misuse for names that the plug-in does not have, and std::exception if it could not begin; the run
// before then lies where it lay.
int collect(CollectOptions options, const Stage& stage);

}  // namespace qvhost
