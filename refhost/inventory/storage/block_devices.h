// Drives that the operating system sees itself: what smartctl and lsblk tell of them.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_smartctl(CaptureLines& lines, Reading& reading);       // smartctl -x -j /dev/...
void read_smartctl_scan(CaptureLines& lines, Reading& reading);  // smartctl --scan -j: no entities
void read_lsblk(CaptureLines& lines, Reading& reading);          // lsblk -J -b -o ...

}  // namespace qvhost::inventory
