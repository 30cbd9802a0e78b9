// What sas2ircu and sas3ircu print of host adapters with integrated RAID, and the log that is decoded
// from "sas2ircu 0 logir upload".
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_ircu(CaptureLines& lines, Reading& reading);  // DISPLAY, STATUS, LIST

// Its events are those of controller 0, which is the one that the plug-in asks; the log does not say.
void read_ir_log(CaptureLines& lines, Reading& reading);

}  // namespace qvhost::inventory
