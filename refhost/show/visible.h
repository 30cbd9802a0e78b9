// Captured text on a terminal: nothing in it may move the cursor, colour the screen or turn the
// direction of writing.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qvhost {

// The text with control bytes as \xNN, control and direction characters as \uNNNN, and bytes that
// are not UTF-8 as \xNN. Line ends within it stay; those at its end are dropped, since nearly every
// captured value has one.
std::string visible(std::string_view text);

// The same in one line: line ends within it as \x0a.
std::string one_line(std::string_view text);

// The text without the blanks and line ends around it, with which tools fill their own columns.
std::string trimmed(std::string_view text);

// How many columns of a terminal a visible text without line ends takes.
std::size_t display_width(std::string_view text);

// The text in lines of at most `width` columns (at least 1), broken at blanks where there are any.
// Never empty: an empty text is one empty line.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

// At most `width` columns of it, with "..." in place of what does not fit.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace qvhost
