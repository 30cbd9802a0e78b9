// Which capture a reader of storage reads, by the capture's name: those that the plug-in leaves, and those
// of the host's own questions.
#pragma once

#include <span>
#include <string_view>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

struct StorageCapture {
    const char* name;  // "*" stands for any characters but "/"
    void (*read)(CaptureLines&, Reading&);
    const char* tells;
    // The same events stand there as well; read this one only if that one is missing or has no end.
    const char* instead_of;  // or null
};

// The first row whose name fits is a capture's reader.
std::span<const StorageCapture> storage_captures();

// The row for the capture; null if no reader knows it.
const StorageCapture* storage_capture(std::string_view name);

// Whether the end of an event log's text shows that it was written to its end.
bool events_are_whole(std::string_view tail);

}  // namespace qvhost::inventory
