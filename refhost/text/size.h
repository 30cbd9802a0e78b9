// Sizes for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>

namespace qvhost {

// "512 B", "1.5 GiB"
inline std::string size_text(std::uint64_t bytes) {
    constexpr const char* kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; size >= 1024 && unit + 1 < std::size(kUnits); ++unit) size /= 1024;
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", size, kUnits[unit]);
    return text;
}

// Without loss, as a command line takes it again: "256MiB", "1536KiB", "1000".
inline std::string exact_size_text(std::uint64_t bytes) {
    constexpr const char* kUnits[] = {"", "KiB", "MiB", "GiB", "TiB"};
    std::size_t unit = 0;
    for (; bytes > 0 && bytes % 1024 == 0 && unit + 1 < std::size(kUnits); ++unit) bytes /= 1024;
    return std::to_string(bytes) + kUnits[unit];
}

}  // namespace qvhost
