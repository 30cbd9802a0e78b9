#include "show/visible.h"

#include <clocale>
#include <cstdio>
#include <cuchar>
#include <cwchar>

#include "text/hidden.h"

namespace qvhost {

namespace {

// Widths and characters are those of UTF-8, whatever the user's locale.
class Utf8 {
public:
    Utf8() : before_(::uselocale(utf8())) {}
    ~Utf8() { ::uselocale(before_); }
    Utf8(const Utf8&) = delete;
    Utf8& operator=(const Utf8&) = delete;

private:
    static locale_t utf8() {
        static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }
    locale_t before_;
};

struct Character {
    char32_t code = 0;
    std::size_t size = 1;  // in bytes
    bool valid = true;
};

Character first_character(std::string_view text) {
    Character character;
    std::mbstate_t state{};
    const std::size_t n = std::mbrtoc32(&character.code, text.data(), text.size(), &state);
    if (n == static_cast<std::size_t>(-1) || n == static_cast<std::size_t>(-2)) {
        character.valid = false;
    } else if (n > 0) {
        character.size = n;
    }
    return character;
}

// "\\x9b" or "\\u202e"
std::string escape(char kind, unsigned code, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "\\%c%0*x", kind, digits, code);
    return text;
}

std::size_t width_of(const Character& character) {
    const int width = character.valid ? ::wcwidth(static_cast<wchar_t>(character.code)) : 1;
    return width < 0 ? 1 : static_cast<std::size_t>(width);
}

// How many bytes of the text fit into `width` columns, at least one character.
std::size_t fitting(std::string_view text, std::size_t width) {
    std::size_t bytes = 0;
    std::size_t columns = 0;
    while (bytes < text.size()) {
        const auto character = first_character(text.substr(bytes));
        columns += width_of(character);
        if (columns > width && bytes > 0) break;
        bytes += character.size;
    }
    return bytes;
}

void wrap_line(std::string_view line, std::size_t width, std::vector<std::string>& lines) {
    do {
        auto size = fitting(line, width);
        auto next = size;
        if (size < line.size()) {
            const auto blank = line.substr(0, size + 1).rfind(' ');
            if (blank != std::string_view::npos && line.find_first_not_of(' ') < blank) {
                size = blank;
                next = blank + 1;
            }
        }
        lines.emplace_back(line.substr(0, size));
        line.remove_prefix(next);
    } while (!line.empty());
}

}  // namespace

std::string visible(std::string_view text) {
    const Utf8 locale;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
    std::string out;
    while (!text.empty()) {
        const auto character = first_character(text);
        const unsigned code = character.code;
        const unsigned byte = static_cast<unsigned char>(text.front());
        if (!character.valid) {
            out += escape('x', byte, 2);
        } else if (code == '\n') {
            out += '\n';
        } else if (code == '\t') {
            out += "    ";
        } else if (is_hidden(character.code)) {
            out += code < 0x80 ? escape('x', code, 2) : escape('u', code, 4);
        } else {
            out += text.substr(0, character.size);
        }
        text.remove_prefix(character.size);
    }
    return out;
}

std::string one_line(std::string_view text) {
    std::string line;
    for (const char c : visible(text)) {
        if (c == '\n') {
            line += "\\x0a";
        } else {
            line += c;
        }
    }
    return line;
}

std::string trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos) return "";
    return std::string(text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1));
}

std::size_t display_width(std::string_view text) {
    const Utf8 locale;
    std::size_t width = 0;
    while (!text.empty()) {
        const auto character = first_character(text);
        width += width_of(character);
        text.remove_prefix(character.size);
    }
    return width;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    const Utf8 locale;
    std::vector<std::string> lines;
    for (;;) {
        const auto end = text.find('\n');
        wrap_line(text.substr(0, end), width < 1 ? 1 : width, lines);
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

std::string shortened(std::string_view text, std::size_t width) {
    if (display_width(text) <= width) return std::string(text);
    if (width <= 3) return std::string(width, '.');
    const Utf8 locale;
    return std::string(text.substr(0, fitting(text, width - 3))) + "...";
}

}  // namespace qvhost
