// What the controllers' tools tell: each function runs its tool, leaves the output in the log
// directory and files what it says.
#pragma once

#include "export.h"
#include "rrepository.h"

namespace marlox::repository {

// RAIDINFO: the summary of MegaRAID controller 0.
QV_EXPORT void lsi_info(RRepository& repository);

// PMCINFO, PMCVER and PMCLINK: the configuration of an Adaptec controller. For hosts; no module
// calls it.
QV_EXPORT void pmc_info(RRepository& repository);

// The place of a log of Intel controllers. It files nothing.
QV_EXPORT void intel_log(RRepository& repository);

}  // namespace marlox::repository
