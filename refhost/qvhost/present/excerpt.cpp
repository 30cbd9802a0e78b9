#include "qvhost/present/excerpt.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "files/descriptor.h"
#include "inventory/capture_lines.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// The name is what a store says: anybody's text.
Descriptor opened(const fs::path& log_dir, const std::string& capture) {
    const fs::path name = capture;
    if (capture.empty() || capture.find('\0') != std::string::npos || name.is_absolute()) return {};
    auto place = log_dir;
    for (const auto& part : name) {
        if (part == "..") return {};
        place /= part;
        std::error_code error;
        if (fs::is_symlink(fs::symlink_status(place, error))) return {};
    }
    Descriptor file(::open(place.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat info {};
    if (!file || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    return file;
}

}  // namespace

std::optional<std::vector<ExcerptLine>> excerpt(const fs::path& log_dir, const std::string& capture,
                                                const std::set<std::int64_t>& lines,
                                                std::int64_t around) {
    auto file = opened(log_dir, capture);
    if (!file) return std::nullopt;
    inventory::CaptureLines capture_lines(file.release());
    std::vector<ExcerptLine> found;
    auto next = lines.begin();  // the first line that is meant and may still show this one
    while (next != lines.end()) {
        const auto line = capture_lines.next();
        if (!line) break;
        while (next != lines.end() && *next + around < line->number) ++next;
        if (next == lines.end() || line->number + around < *next) continue;
        found.push_back({line->number, std::string(line->text), lines.contains(line->number)});
    }
    return found;
}

}  // namespace qvhost
