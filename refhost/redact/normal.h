// A text as values are looked for in it: lower case, without line ends, and its hexadecimal digits without what
// divides them. Each character knows its place.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qvhost::redact {

// The text in lower case; a line end and the space at the beginning of the next line are not in it.
class Joined {
public:
    explicit Joined(std::string_view text);
    const std::string& text() const { return text_; }
    // Where its character stands in the original. Quick for places that ascend.
    std::size_t place(std::size_t at) const;

private:
    std::string text_;
    std::vector<std::pair<std::size_t, std::size_t>> lines_;  // where each begins here and there
    mutable std::size_t line_ = 0;
};

// Hexadecimal digits with nothing between them but what divides digits: any of ":-. ,_\t" and line ends, "0x" and
// "\x"; but a comma behind a single digit ends a run.
struct HexRun {
    std::string digits;  // lower case
    // Where the text has so many of them, from one on.
    std::vector<std::size_t> places(std::size_t from, std::size_t count) const;

    std::string_view text;  // all of it
    std::size_t at = 0;     // where its first digit stands
};

// Those of at least ten digits.
void each_hex_run(std::string_view text, const std::function<void(const HexRun&)>& take);

}  // namespace qvhost::redact
