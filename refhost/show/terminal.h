// The terminal: whether there is one, its width, and whether it shows colours.
#pragma once

#include <string>

namespace qvhost {

struct TerminalStyle {
    unsigned width = 80;  // in columns; 0: lines are as long as they need to be
    bool colour = false;
    bool terminal = false;
};

// The width of the terminal behind `fd` (or $COLUMNS), and colour unless $NO_COLOR is set. If `fd` is
// no terminal: no width, so that a row stays one line for grep and the like, and no colour.
TerminalStyle terminal_style(int fd);

// The text in bold, if the terminal shows it.
std::string bold(const std::string& text, const TerminalStyle& style);

}  // namespace qvhost
