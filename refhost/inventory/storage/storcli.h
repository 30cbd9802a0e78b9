// What storcli and the makers' renamed builds of it (perccli, storcli2) print of controllers, volumes
// and drives, whatever was asked: "show", "/c0 show all", "/c0/eall/sall show all", ... Headings and
// column names say what is what, so one reader reads them all.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_storcli(CaptureLines& lines, Reading& reading);

}  // namespace qvhost::inventory
