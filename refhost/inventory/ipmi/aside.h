// What the IPMI tools print beside their answers: words that mean nothing, and errors.
#pragma once

#include <cstddef>
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

// The first line of a tool's answer. A command whose two streams go to one file by redirections of their own
// writes its messages over the beginning of its answer; so does the shell, which says "Killed" there.
class FirstLine {
public:
    // In each line that the tool prints stands `separator`, and never before `column` (from 0).
    FirstLine(char separator, std::size_t column) : separator_(separator), column_(column) {}

    // A line that is a message.
    void message_before() { has_message_ = true; }
    // A line of the answer. Notes a gap and returns true if messages have left only the end of it.
    bool is_overwritten(const CaptureLine& line, std::string_view text, Reading& reading);

private:
    char separator_;
    std::size_t column_;
    bool has_message_ = false;
    bool has_passed_ = false;
};

// Notes that something should stand there and does not, or cannot be read.
void add_gap(Reading& reading, std::int64_t line, std::string words);

}  // namespace qvhost::inventory
