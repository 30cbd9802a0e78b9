// What ssacli (hpssacli, hpacucli) prints: "ctrl all show config detail".
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// A controller's number is its slot; a drive's enclosure is its box and its slot the bay.
void read_ssacli(CaptureLines& lines, Reading& reading);

}  // namespace qvhost::inventory
