// The loop of every reader that takes one line after another.
#pragma once

#include <cstring>
#include <string>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// Calls visit(line) for each line, and notes how many there were and whether the file could be read
// to its end.
template <class Visit>
void each_line(CaptureLines& lines, Reading& reading, Visit visit) {
    while (const auto line = lines.next()) visit(*line);
    reading.how.lines = lines.count();
    if (lines.error() != 0)
        reading.how.gaps.push_back(
            {lines.count(), std::string("cannot be read: ") + std::strerror(lines.error())});
}

}  // namespace qvhost::inventory
