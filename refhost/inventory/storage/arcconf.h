// What arcconf prints of its controllers: "GETCONFIG 1" and its parts AD, LD, PD; "LIST"; "GETSTATUS 1";
// and the "Controller 1 Config.txt" of its support archive, which is the first of these.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// Only "LIST" says in its text which controller it speaks of: `controller` is the one that was asked,
// counted from 1 as arcconf does. If it is not known it is 1 where there is but one.
void read_arcconf(CaptureLines& lines, Reading& reading, Integer controller);

}  // namespace qvhost::inventory
