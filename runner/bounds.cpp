#include "runner/bounds.h"

#include <sys/resource.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <system_error>

#include "runner/group.h"
#include "runner/written_files.h"

namespace runner {

namespace {

std::optional<std::uint64_t> number_from(const char* variable) {
    const char* const value = std::getenv(variable);
    const std::string_view text = value ? value : "";
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number == 0)
        return std::nullopt;
    return number;
}

// Nothing if the system does not say.
std::optional<std::uint64_t> free_bytes_here() {
    struct statvfs info {};
    if (::statvfs(".", &info) != 0 || info.f_blocks == 0) return std::nullopt;
    return std::uint64_t{info.f_bavail} * info.f_frsize;
}

}  // namespace

Bounds::Bounds(bool packs_archive)
    : file_(number_from("QV_CAPTURE_BYTES")),
      run_(number_from("QV_RUN_BYTES")),
      free_(number_from("QV_FREE_BYTES")),
      processes_(number_from("QV_PROCESSES")) {
    if (!packs_archive) return;
    if (const auto archive = number_from("QV_ARCHIVE_BYTES")) file_ = archive;
}

std::optional<std::uint64_t> Bounds::file_bytes() {
    const auto free = free_ ? free_bytes_here() : std::nullopt;
    if (!free || *free < *free_) return file_;
    const auto room = *free - *free_;
    if (file_ && *file_ <= room) return file_;
    file_reason_ = kNoRoom;
    return file_ = room;
}

const char* Bounds::exceeded_now(const CommandProcesses* processes,
                                 const WrittenFiles* files) const {
    if (file_ || run_) {
        const auto bytes = files ? files->bytes() : WrittenFiles(true).bytes();
        if (file_ && bytes.largest > *file_) return file_reason_;
        if (run_ && bytes.all > *run_) return kRunTooLarge;
    }
    if (free_ && free_bytes_here().value_or(*free_) < *free_) return kNoRoom;
    if (processes_ && processes && processes->members().size() > *processes_)
        return kTooManyProcesses;
    return nullptr;
}

const char* Bounds::exceeded(const CommandProcesses* processes, const WrittenFiles* files) {
    const auto begin = Clock::now();
    if (!any() || begin < next_look_) return nullptr;
    const char* const reason = exceeded_now(processes, files);
    // A directory or a system that is full takes time to look at: at most a twentieth of it all.
    constexpr auto kPause = std::chrono::milliseconds(100);
    constexpr int kShare = 20;
    const auto end = Clock::now();
    next_look_ = end + std::max<Clock::duration>(kPause, (end - begin) * kShare);
    return reason;
}

const char* Bounds::exceeded_at_end(const WrittenFiles& files) const {
    return file_ && files.bytes().largest > *file_ ? file_reason_ : nullptr;
}

std::size_t most_value_bytes() {
    return number_from("QV_VALUE_BYTES").value_or(std::numeric_limits<std::size_t>::max());
}

ScopedFileSize::ScopedFileSize(std::optional<std::uint64_t> bytes) {
    rlimit limit{};
    if (!bytes || ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur <= *bytes) return;
    before_ = limit.rlim_cur;
    limit.rlim_cur = *bytes + 1;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

ScopedFileSize::~ScopedFileSize() {
    rlimit limit{};
    if (!before_ || ::getrlimit(RLIMIT_FSIZE, &limit) != 0) return;
    limit.rlim_cur = *before_;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace runner
