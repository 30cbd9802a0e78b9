// Some lines of a capture, with those around them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qvhost {

struct ExcerptLine {
    std::int64_t number = 0;  // from 1
    std::string text;         // of a longer one its first 64 KiB
    bool is_meant = false;    // false: it stands beside one that is
};

// These lines of the capture and `around` more before and behind each, in order, each once. Nothing if the
// capture cannot be read; one outside the directory, or behind a link, is not.
std::optional<std::vector<ExcerptLine>> excerpt(const std::filesystem::path& log_dir,
                                                const std::string& capture,
                                                const std::set<std::int64_t>& lines,
                                                std::int64_t around);

}  // namespace qvhost
