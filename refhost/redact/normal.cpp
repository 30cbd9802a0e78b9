#include "redact/normal.h"

#include <algorithm>
#include <array>

#include "redact/letters.h"

namespace qvhost::redact {

namespace {

constexpr std::size_t kShortestRun = 10;

enum class Part : unsigned char { other, digit, divider };

constexpr auto kParts = [] {
    std::array<Part, 256> parts{};
    for (unsigned c = 0; c < parts.size(); ++c) {
        const char character = static_cast<char>(c);
        if (is_hex(character))
            parts[c] = Part::digit;
        else if (std::string_view(":-. ,_\t\r\n\\%").find(character) != std::string_view::npos)
            parts[c] = Part::divider;
    }
    return parts;
}();

}  // namespace

Joined::Joined(std::string_view text) {
    text_.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto end = std::min(text.find('\n', at), text.size());
        auto begin = at;
        while (begin < end && is_space(text[begin])) ++begin;
        auto stop = end;
        if (stop > begin && text[stop - 1] == '\r') --stop;
        lines_.emplace_back(text_.size(), begin);
        const auto from = text_.size();
        text_.resize(from + (stop - begin));
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(begin),
                       text.begin() + static_cast<std::ptrdiff_t>(stop),
                       text_.begin() + static_cast<std::ptrdiff_t>(from), lower);
        at = end + 1;
    }
}

std::size_t Joined::place(std::size_t at) const {
    if (line_ >= lines_.size() || lines_[line_].first > at) line_ = 0;
    if (line_ + 1 < lines_.size() && lines_[line_ + 1].first <= at) {
        const auto next = std::upper_bound(
            lines_.begin() + static_cast<std::ptrdiff_t>(line_), lines_.end(), at,
            [](std::size_t place, const auto& line) { return place < line.first; });
        line_ = static_cast<std::size_t>(next - lines_.begin()) - 1;
    }
    return lines_[line_].second + (at - lines_[line_].first);
}

HexRuns::HexRuns(std::string_view text) {
    std::size_t begin = 0;  // of the run
    std::size_t group = 0;  // where the digits since the last divider begin
    const auto end_run = [&] {
        if (digits.size() - begin < kShortestRun) {
            digits.resize(begin);
            places.resize(begin);
        } else {
            digits += '\0';
            places.push_back(0);
        }
        begin = digits.size();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        switch (kParts[static_cast<unsigned char>(c)]) {
            case Part::digit:
                if (c == '0' && lower(at_or_end(text, i + 1)) == 'x' &&
                    is_hex(at_or_end(text, i + 2))) {
                    ++i;
                } else {
                    digits += lower(c);
                    places.push_back(i);
                }
                break;
            case Part::divider:
                if (c == '\\' && lower(at_or_end(text, i + 1)) == 'x') ++i;
                // Bytes in a list have two digits each; "0,2,0,0" are numbers.
                if (c == ',' && digits.size() == group + 1) end_run();
                group = digits.size();
                break;
            case Part::other:
                if (digits.size() > begin) end_run();
                group = digits.size();
                break;
        }
    }
    end_run();
}

}  // namespace qvhost::redact
