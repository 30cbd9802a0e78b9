// The loop of every reader that takes one line after another.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// Calls visit(line) for each line, and notes how many there were.
template <class Visit>
void each_line(CaptureLines& lines, Reading& reading, Visit visit) {
    while (const auto line = lines.next()) visit(*line);
    reading.how.lines = lines.count();
}

}  // namespace qvhost::inventory
