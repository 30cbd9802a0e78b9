#pragma once

#include <string>

namespace qvhost {

struct TerminalStyle {
    unsigned width = 80;
    bool colour = false;
};

// What the terminal behind `fd` can show: its width (or $COLUMNS), colour unless $NO_COLOR is set.
// Where there is no terminal: 80 columns, no colour.
TerminalStyle terminal_style(int fd);

// The text in bold, if the terminal shows it.
std::string bold(const std::string& text, const TerminalStyle& style);

}  // namespace qvhost
