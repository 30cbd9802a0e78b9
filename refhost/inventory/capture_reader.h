// Which reader reads which capture: a row of the tables that the readers' folders give.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

struct CaptureReader {
    const char* pattern;  // the capture's name; '*' stands for any characters
    void (*read)(CaptureLines&, Reading&);
};

}  // namespace qvhost::inventory
