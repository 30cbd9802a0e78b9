#include "show/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace qvhost {

namespace {

bool is_set(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

unsigned columns_variable() {
    const std::string_view text = is_set("COLUMNS") ? std::getenv("COLUMNS") : "";
    unsigned columns = 0;
    std::from_chars(text.data(), text.data() + text.size(), columns);
    return columns;
}

}  // namespace

TerminalStyle terminal_style(int fd) {
    TerminalStyle style;
    const bool terminal = ::isatty(fd) == 1;
    const char* kind = std::getenv("TERM");
    const bool dumb = !kind || std::strcmp(kind, "dumb") == 0;
    style.terminal = terminal;
    style.colour = terminal && !dumb && !is_set("NO_COLOR");

    winsize size{};
    if (const auto columns = columns_variable(); columns > 0) {
        style.width = columns;
    } else if (terminal && ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        style.width = size.ws_col;
    } else if (!terminal) {
        style.width = 0;
    }
    return style;
}

std::string bold(const std::string& text, const TerminalStyle& style) {
    return style.colour ? "\033[1m" + text + "\033[0m" : text;
}

}  // namespace qvhost
