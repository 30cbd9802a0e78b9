#include "inventory/capture_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "inventory/forms.h"

namespace qvhost::inventory {

namespace {

bool fits(std::string_view pattern, std::string_view name) {
    const auto star = pattern.find('*');
    if (star == std::string_view::npos) return pattern == name;
    const auto behind = pattern.substr(star + 1);
    if (!name.starts_with(pattern.substr(0, star))) return false;
    name.remove_prefix(star);
    for (std::size_t size = 1; size <= name.size() && name[size - 1] != '/'; ++size) {
        if (fits(behind, name.substr(size))) return true;
    }
    return false;
}

constexpr auto kNoneThere = std::to_array<std::string_view>({
    "*is absent*",
    "*not present*",
    "*not supported*",
    "Un-supported command*",
    "*No drive found*",
    "*No Drive found*",
    "Failed to get enclosure information*",
});

}  // namespace

bool says_there_is_none(std::string_view error) { return is_like_any(error, kNoneThere); }

Gap cannot_be_read(int error, std::int64_t lines) {
    return {lines, std::string("cannot be read: ") + std::strerror(error)};
}

void read_lines(const CaptureReader& reader, CaptureLines& lines, Reading& reading) {
    reader.read(lines, reading);
    if (lines.error() != 0)
        reading.how.gaps.push_front(cannot_be_read(lines.error(), lines.count()));
}

const CaptureReader* reader_for(std::span<const CaptureReader> readers, std::string_view capture) {
    for (const auto& reader : readers) {
        if (fits(reader.pattern, capture)) return &reader;
    }
    return nullptr;
}

}  // namespace qvhost::inventory
