// What the IPMI utilities tell of the BMC. Each function runs one command, leaves its output in the
// log directory and files what it says; the table that it fills is declared beside it. All return 0
// for success, 1 for failure.
#pragma once

#include "export.h"
#include "file/table.h"
#include "rrepository.h"

namespace marlox::repository {

// One of six answers of the BMC, by kind: 1 controller, 2 self-test, 3 firmware versions, 4 power
// supplies, 5 management LAN, 6 LEDs.
QV_EXPORT int bmc_info(RRepository& repo, int kind);
extern const capture::Table kMcInfo;
extern const capture::Table kSelfInfo;
extern const capture::Table kVerInfo;
extern const capture::Table kPsuInfo;
extern const capture::Table kLanInfo;
extern const capture::Table kLedInfo;

QV_EXPORT int sensor_info(RRepository& repo);  // one row a sensor
extern const capture::Table kSensorInfo;

QV_EXPORT int sdr_info(RRepository& repo);  // one row a line
extern const capture::Table kSdrInfo;

QV_EXPORT int fru_info(RRepository& repo);  // one row a line
extern const capture::Table kFruInfo;

// FRUINFO from FRU device 0 alone, blank lines left out. For hosts; no module calls it.
QV_EXPORT int fru_info_amd(RRepository& repo);

QV_EXPORT int sel_info(RRepository& repo);  // one row a line
extern const capture::Table kSelInfo;

// Raw captures that no table is made of; both return the command's wait status.
QV_EXPORT int sen_id();  // sensor_with_id_string.txt
QV_EXPORT int selhex();  // SEL_Hex.txt

namespace bmc {

extern const capture::Module kModule;

}  // namespace bmc

}  // namespace marlox::repository
