// What the IPMI utilities tell of the BMC: each function runs one command, leaves its output in the
// log directory and files what it says. All return 0 for success, 1 for failure.
#pragma once

#include "export.h"
#include "rrepository.h"

namespace marlox::repository {

// One of six answers of the BMC, by kind: 1 controller, 2 self-test, 3 firmware versions, 4 power
// supplies, 5 management LAN, 6 LEDs.
QV_EXPORT int bmc_info(RRepository& repo, int kind);

QV_EXPORT int sensor_info(RRepository& repo);  // SENSORINFO, one row a sensor
QV_EXPORT int sdr_info(RRepository& repo);     // SDRINFO, one row a line
QV_EXPORT int fru_info(RRepository& repo);     // FRUINFO, one row a line
QV_EXPORT int sel_info(RRepository& repo);     // SELINFO, one row a line

// FRUINFO from FRU device 0 alone, blank lines left out. For hosts; no module calls it.
QV_EXPORT int fru_info_amd(RRepository& repo);

// Raw captures that no table is made of; both return the command's wait status.
QV_EXPORT int sen_id();  // sensor_with_id_string.txt
QV_EXPORT int selhex();  // SEL_Hex.txt

}  // namespace marlox::repository
