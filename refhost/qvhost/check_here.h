// `check` without a report: a quick collection of this machine, and its verdict.
#pragma once

#include "qvhost/base/options.h"

namespace qvhost {

// Collects what verdicts need, into `collecting.log_dir` or, if that is empty, into a directory that goes
// again, and checks the report. Returns the exit status of a monitoring plug-in.
int check_here(const CheckOptions& options, CollectOptions collecting);

}  // namespace qvhost
