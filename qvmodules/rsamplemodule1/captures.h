// What the controllers' tools tell. Each function runs its tool, leaves the output in the log
// directory and files what it says; the tables that it fills are declared beside it.
#pragma once

#include "export.h"
#include "file/table.h"
#include "rrepository.h"

namespace marlox::repository {

// The summary of MegaRAID controller 0.
QV_EXPORT void lsi_info(RRepository& repository);
extern const capture::Table kRaidInfo;

// The configuration of an Adaptec controller. For hosts; no module calls it.
QV_EXPORT void pmc_info(RRepository& repository);
extern const capture::Table kPmcInfo;
extern const capture::Table kPmcVer;
extern const capture::Table kPmcLink;

// The place of a log of Intel controllers. It files nothing.
QV_EXPORT void intel_log(RRepository& repository);

namespace sample1 {

// The sample tables, whose records never vary.
void file_samples(RRepository& repository);
extern const capture::Table kTable1;
extern const capture::Table kTable2;

// Tables that hosts lay out and nothing fills.
extern const capture::Table kPelAdd;
extern const capture::Table kController;

extern const capture::Module kModule;

}  // namespace sample1

}  // namespace marlox::repository
