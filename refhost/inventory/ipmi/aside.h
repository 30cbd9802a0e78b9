// What the IPMI tools print beside their answers: words that mean nothing, and errors.
#pragma once

#include <string_view>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// The line without the chatter at its beginning: standard error may end up before a row on its line.
// Empty if there is nothing else.
std::string_view without_chatter(std::string_view line);

// Whether the tool says that something went wrong.
bool is_tool_error(std::string_view line);

// Whether a row's first cell holds an error that was printed before the row on its line. Names of
// sensors are never so long.
bool is_error_before_name(std::string_view name);

// A line that is no row of the reader's table: an error is noted as such, chatter and blank lines are
// passed over, and all else counts as not understood.
void read_aside(const CaptureLine& line, Reading& reading);

// Notes that something should stand there and does not, or cannot be read.
void add_gap(Reading& reading, std::int64_t line, std::string words);

}  // namespace qvhost::inventory
