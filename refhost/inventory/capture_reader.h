// Which reader reads which capture: a row of the tables that the readers' folders give.
#pragma once

#include <span>
#include <string_view>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

struct CaptureReader {
    const char* pattern;  // the capture's name; "*" stands for any characters but "/", at least one
    void (*read)(CaptureLines&, Reading&);
    // Another capture that tells the same events: this one is read only if that one is missing or does
    // not come to its end. Null: there is none.
    const char* instead_of = nullptr;
};

// The first row whose pattern fits the capture's name; null: there is none.
const CaptureReader* reader_for(std::span<const CaptureReader> readers, std::string_view capture);

}  // namespace qvhost::inventory
