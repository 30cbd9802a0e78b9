// A controller's own logs, as storcli prints them: its events, and the firmware's terminal log.
#pragma once

#include <string_view>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// "/c0 show events". The events' source is "controller N" with the text's own word on N; where that
// stands behind the events, `controller` is what they are handed on with, and a contradiction is a gap.
void read_storcli_events(CaptureLines& lines, Reading& reading, Integer controller);

// The end of such a text, to choose between two captures of the same events and to learn their
// controller before they are read.
struct StorcliEventsEnd {
    Integer controller;
    bool is_whole = false;  // the closing lines are there
};
StorcliEventsEnd storcli_events_end(std::string_view tail);

// "/c0 show termlog". Its lines are known and give no events: a line's time is a count of the firmware's
// own, and what matters stands in the event log as well.
void read_storcli_termlog(CaptureLines& lines, Reading& reading);

}  // namespace qvhost::inventory
