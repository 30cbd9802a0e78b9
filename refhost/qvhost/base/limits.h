// The limits of a collection. Of time: whole run >= module >= archive >= tool, and silence within a tool. Of size:
// whole run >= archive >= capture >= what a table's records may have.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "qvhost/base/options.h"

namespace qvhost {

struct Limits {
    unsigned run_seconds = 0;
    unsigned module_seconds = 0;
    unsigned archive_seconds = 0;  // a tool that packs the logs of a whole system
    unsigned tool_seconds = 0;
    unsigned silence_seconds = 0;     // of a tool that neither prints nor writes nor works
    std::uint64_t run_bytes = 0;      // of all that a collection writes
    std::uint64_t archive_bytes = 0;  // of a file that such a packing tool writes
    std::uint64_t capture_bytes = 0;  // of a file that another tool writes
    std::uint64_t table_bytes = 0;    // of the records of a table
    unsigned processes = 0;           // of a tool, at a time
    bool operator==(const Limits&) const = default;
};

// A tool that packs the logs of a whole system may take so many times as long as another tool.
inline constexpr unsigned kArchiveTimes = 6;

inline constexpr std::uint64_t kMib = 1 << 20;

// What they are unless the user says otherwise.
inline constexpr Limits kUsualLimits{
    .run_seconds = 7200,
    .module_seconds = 3600,
    .archive_seconds = kArchiveTimes * 300,
    .tool_seconds = 300,
    .silence_seconds = 120,
    .run_bytes = 8192 * kMib,
    .archive_bytes = 4096 * kMib,
    .capture_bytes = 256 * kMib,
    .table_bytes = 256 * kMib,
    .processes = 512,
};

// Of the profile "health", which may run every five minutes.
inline constexpr Limits kHealthLimits{
    .run_seconds = 240,
    .module_seconds = 240,
    .archive_seconds = 240,
    .tool_seconds = 60,
    .silence_seconds = 60,
    .run_bytes = kUsualLimits.run_bytes,
    .archive_bytes = kUsualLimits.archive_bytes,
    .capture_bytes = kUsualLimits.capture_bytes,
    .table_bytes = kUsualLimits.table_bytes,
    .processes = kUsualLimits.processes,
};

// The highest limits that can be set.
inline constexpr unsigned kMaxSeconds = 86400;
inline constexpr std::uint64_t kMaxBytes = kMib << 20;
inline constexpr unsigned kMaxProcesses = 1 << 20;

inline constexpr unsigned kMostValueBytes = 1
                                            << 18;  // of a single value that is read from a capture

// What the disk keeps free unless the user says otherwise: a share of it, at most so much.
inline constexpr unsigned kFreePercent = 5;
inline constexpr std::uint64_t kMostFreeBytes = 1024 * kMib;

// Limits that do not contradict each other: what was asked for stands, what was not fits around it.
// Throws std::invalid_argument, with both limits named, if those that were asked for do.
Limits limits_for(const CollectOptions& asked);

// "ipmitool=900,storcli=60". Throws std::invalid_argument for what is no tool's name and seconds.
std::string tool_limits_text(const CollectOptions& asked);

// What the disk of the directory is to keep free, in bytes; 0: all may be used, or the system does not say how
// large it is.
std::uint64_t free_bytes_for(const CollectOptions& asked, const std::filesystem::path& directory);

// "run 7200 s, module 3600 s, ..." for people.
std::string text_of(const Limits& limits);

// "5 % of the disk, at most 1GiB", "100MiB"
std::string free_text(const CollectOptions& asked);

}  // namespace qvhost
