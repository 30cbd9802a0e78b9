// Functions that cut the text of a capture. They return views into the text that they are given.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace marlox::repository::capture {

// A tool's text ends at its first NUL, as a C string does.
std::string_view c_text(std::string_view bytes);

// The first line of `text` with its line end, at most `most` bytes of it, up to its first NUL.
std::string_view first_line(std::string_view text, std::size_t most);

// The line from `at` on; empty if the line is shorter.
constexpr std::string_view rest(std::string_view line, std::size_t at) {
    return line.substr(std::min(at, line.size()));
}

constexpr bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// The decimal integer that `text` begins with, blanks and a sign before it allowed (scanf's "%d");
// 0 if there is none, the nearest int if it is too large.
int leading_int(std::string_view text);

// Cuts a text at any of the delimiters; delimiters in a row count as one, so no token is empty
// (the rule of strtok).
class Tokens {
public:
    Tokens(std::string_view text, std::string_view delimiters)
        : at_(text.data()), end_(text.data() + text.size()) {
        for (const char c : delimiters) delimits_[static_cast<unsigned char>(c)] = true;
    }

    std::optional<std::string_view> next() {
        while (at_ != end_ && delimits(*at_)) ++at_;
        if (at_ == end_) return std::nullopt;

        const char* const begin = at_;
        while (at_ != end_ && !delimits(*at_)) ++at_;
        return std::string_view(begin, static_cast<std::size_t>(at_ - begin));
    }

private:
    bool delimits(char c) const { return delimits_[static_cast<unsigned char>(c)]; }

    const char* at_;
    const char* end_;
    std::array<bool, 256> delimits_ = {};
};

}  // namespace marlox::repository::capture
