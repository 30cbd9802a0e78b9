// What the controllers' tools tell: each function runs its tool, leaves the output in the log
// directory and files what it says. All but lsi_link() speak of controller 0.
#pragma once

#include "export.h"
#include "rrepository.h"

namespace marlox::repository {

// LSILINK: captures a controller's four reports as raw files and files links to them.
QV_EXPORT void lsi_link(RRepository& repo, int controller);

QV_EXPORT void event_log(RRepository& repository);    // EVENTLOG1 ... EVENTLOG5, one row an event
QV_EXPORT void fw_term_log(RRepository& repository);  // FWTERMLOG, one row a line
QV_EXPORT void pd_list(RRepository& repo);            // PDLIST, one row a drive
QV_EXPORT void lsi_list(RRepository& repo);           // TINFO, VINFO, PINFO
QV_EXPORT void sas2308_log(RRepository& repo);        // SAS2IRLOG, one row an entry

// The place of a log of Intel RSTe. It files nothing.
QV_EXPORT void intelrste_log(RRepository& repo);

// The "Event Data" text of the event that event_log() is reading. Both keep their content between
// calls.
QV_EXPORT extern char total_buff[2048];
QV_EXPORT extern int flag_data;  // 1: the next line of event data begins a new text

}  // namespace marlox::repository
