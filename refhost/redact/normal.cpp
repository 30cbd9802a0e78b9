#include "redact/normal.h"

#include <algorithm>
#include <array>

#include "redact/letters.h"

namespace qvhost::redact {

namespace {

constexpr std::size_t kShortestRun = 10;

enum class Part : unsigned char { other, digit, divider, x };

constexpr auto kParts = [] {
    std::array<Part, 256> parts{};
    for (unsigned c = 0; c < parts.size(); ++c) {
        const char character = static_cast<char>(c);
        if (is_hex(character))
            parts[c] = Part::digit;
        else if (lower(character) == 'x')
            parts[c] = Part::x;
        else if (std::string_view(":-. ,_\t\r\n\\%").find(character) != std::string_view::npos)
            parts[c] = Part::divider;
    }
    return parts;
}();

Part part_of(char c) { return kParts[static_cast<unsigned char>(c)]; }
bool may_be_in_run(char c) { return part_of(c) != Part::other; }

bool is_x(std::string_view text, std::size_t at) { return lower(at_or_end(text, at)) == 'x'; }
// "0x" before a digit.
bool is_prefix(std::string_view text, std::size_t at) {
    return text[at] == '0' && is_x(text, at + 1) && is_hex(at_or_end(text, at + 2));
}

class RunReader {
public:
    RunReader(std::string_view text, HexRun& run, const std::function<void(const HexRun&)>& take)
        : text_(text), run_(run), take_(take) {
        run_.text = text;
    }

    void read(std::size_t begin, std::size_t end) {
        for (auto i = begin; i < end; ++i) {
            const char c = text_[i];
            switch (part_of(c)) {
                case Part::digit:
                    if (is_prefix(text_, i)) {
                        ++i;
                    } else {
                        if (run_.digits.empty()) run_.at = i;
                        run_.digits += lower(c);
                    }
                    break;
                case Part::divider:
                    if (c == '\\' && is_x(text_, i + 1)) ++i;
                    // Bytes in a list have two digits each; "0,2,0,0" are numbers.
                    if (c == ',' && run_.digits.size() == group_ + 1) end_run();
                    group_ = run_.digits.size();
                    break;
                case Part::x:
                case Part::other: end_run(); break;
            }
        }
        end_run();
    }

private:
    void end_run() {
        if (run_.digits.size() >= kShortestRun) take_(run_);
        run_.digits.clear();
        group_ = 0;
    }

    std::string_view text_;
    HexRun& run_;
    const std::function<void(const HexRun&)>& take_;
    std::size_t group_ = 0;  // where the digits since the last divider begin
};

}  // namespace

std::vector<std::size_t> HexRun::places(std::size_t from, std::size_t count) const {
    std::vector<std::size_t> places;
    places.reserve(count);
    std::size_t digit = 0;
    for (auto i = at; places.size() < count; ++i) {
        if (!is_hex(text[i])) continue;
        if (is_prefix(text, i))
            ++i;
        else if (digit++ >= from)
            places.push_back(i);
    }
    return places;
}

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

void each_hex_run(std::string_view text, const std::function<void(const HexRun&)>& take) {
    HexRun run;
    for (std::size_t begin = 0; begin + kShortestRun <= text.size();) {
        // The last of so many characters says most often that no run is among them.
        auto end = begin + kShortestRun;
        auto at = end;
        while (at > begin && may_be_in_run(text[at - 1])) --at;
        if (at > begin) {
            begin = at;
            continue;
        }
        while (end < text.size() && may_be_in_run(text[end])) ++end;
        RunReader(text, run, take).read(begin, end);
        begin = end;
    }
}

}  // namespace qvhost::redact
