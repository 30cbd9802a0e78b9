// Which of the captures that tell of storage is read by which reader: those that the plug-in leaves, and
// those of the host's own questions.
#pragma once

#include <span>
#include <string_view>

#include "inventory/capture_reader.h"

namespace qvhost::inventory {

// The first row whose pattern fits is a capture's reader.
std::span<const CaptureReader> storage_captures();

// Whether the end of an event log's text shows that it was written to its end.
bool events_are_whole(std::string_view tail);

}  // namespace qvhost::inventory
