// The readers of what a BMC's tools print. captures.h says which capture each of them reads.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_sensors(CaptureLines&, Reading&);             // ipmitool sensor
void read_sdr(CaptureLines&, Reading&);                 // ipmitool sdr, sdr elist
void read_fru(CaptureLines&, Reading&);                 // ipmitool fru
void read_sel(CaptureLines&, Reading&);                 // ipmitool sel list, sel elist
void read_ipmiutil_sel(CaptureLines&, Reading&);        // ipmiutil sel
void read_sel_info(CaptureLines&, Reading&);            // ipmitool sel info
void read_selftest(CaptureLines&, Reading&);            // ipmitool mc selftest
void read_mc_info(CaptureLines&, Reading&);             // ipmitool mc info, ipmiutil's OEM answer
void read_oem_lan(CaptureLines&, Reading&);             // ipmiutil's OEM answer
void read_chassis_status(CaptureLines&, Reading&);      // ipmitool chassis status
void read_oem_power_supplies(CaptureLines&, Reading&);  // ipmiutil's OEM answer
void read_oem_versions(CaptureLines&, Reading&);        // ipmiutil's OEM answer
void read_oem_leds(CaptureLines&, Reading&);            // ipmiutil's OEM answer
void read_ipmiutil_sensors(CaptureLines&, Reading&);    // ipmiutil sensor

}  // namespace qvhost::inventory
