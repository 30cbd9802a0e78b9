// What the controllers' tools tell. Each function runs its tool, leaves the output in the log
// directory and files what it says; the tables that it fills are declared beside it. All but
// lsi_link() speak of controller 0.
#pragma once

#include <array>

#include "export.h"
#include "file/table.h"
#include "rrepository.h"

namespace marlox::repository {

// Captures a controller's four reports as raw files and files links to them.
QV_EXPORT void lsi_link(RRepository& repo, int controller);
extern const capture::Table kLsiLink;

QV_EXPORT void event_log(RRepository& repository);  // one row an event
extern const std::array<capture::Table, 5> kEventLog;

QV_EXPORT void fw_term_log(RRepository& repository);  // one row a line
extern const capture::Table kFwTermLog;

QV_EXPORT void pd_list(RRepository& repo);  // one row a drive
extern const capture::Table kPdList;

QV_EXPORT void lsi_list(RRepository& repo);
extern const capture::Table kTopology;
extern const capture::Table kVirtualDrives;
extern const capture::Table kPhysicalDrives;

QV_EXPORT void sas2308_log(RRepository& repo);  // one row an entry
extern const capture::Table kSas2IrLog;

// The place of a log of Intel RSTe. It files nothing.
QV_EXPORT void intelrste_log(RRepository& repo);

// The "Event Data" text of the event that event_log() is reading. Both keep their content from call
// to call.
QV_EXPORT extern char total_buff[2048];
QV_EXPORT extern int flag_data;  // 1: the next line of event data begins a new text

namespace sample2 {

// The sample tables, whose records never vary.
void file_samples(RRepository& repo);
extern const capture::Table kTable1;
extern const capture::Table kTable2;

// Tables that hosts lay out and nothing fills.
extern const capture::Table kEndDevices;
extern const capture::Table kArray;
extern const capture::Table kVolume;

extern const capture::Module kModule;

}  // namespace sample2

}  // namespace marlox::repository
