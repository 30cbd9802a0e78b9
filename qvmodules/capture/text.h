// Cutting the text of a capture. Everything here is a view into the text it was given.
#pragma once

#include <optional>
#include <string_view>

namespace marlox::repository::capture {

// A tool's text ends at its first NUL, as a C string does.
std::string_view c_text(std::string_view bytes);

// The first line of `text` with its line end, at most `most` bytes of it, up to its first NUL.
std::string_view first_line(std::string_view text, std::size_t most);

// What stands at `at` and behind; empty where the line ends before.
std::string_view rest(std::string_view line, std::size_t at);

bool contains(std::string_view text, std::string_view part);

// The decimal integer that `text` begins with, blanks and a sign before it allowed (scanf's "%d");
// 0 if there is none, the nearest int if it is too large.
int leading_int(std::string_view text);

// Cuts a text at any of the delimiters; delimiters in a row count as one, so no token is empty
// (the rule of strtok).
class Tokens {
public:
    Tokens(std::string_view text, std::string_view delimiters)
        : rest_(text), delimiters_(delimiters) {}

    std::optional<std::string_view> next();

private:
    std::string_view rest_;
    std::string_view delimiters_;
};

}  // namespace marlox::repository::capture
