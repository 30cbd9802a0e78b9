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
    unsigned silence_seconds = 0;  // of a tool that neither prints nor writes nor works
    unsigned run_mib = 0;          // of all that a collection writes
    unsigned archive_mib = 0;  // of a file that a tool writes that packs the logs of a whole system
    unsigned capture_mib = 0;  // of a file that another tool writes
    unsigned table_mib = 0;    // of the records of a table
    unsigned processes = 0;    // of a tool, at a time
    bool operator==(const Limits&) const = default;
};

// A tool that packs the logs of a whole system may take so many times as long as another tool.
inline constexpr unsigned kArchiveTimes = 6;

// What they are unless the user says otherwise.
inline constexpr Limits kUsualLimits{
    .run_seconds = 7200,
    .module_seconds = 3600,
    .archive_seconds = kArchiveTimes * 300,
    .tool_seconds = 300,
    .silence_seconds = 120,
    .run_mib = 8192,
    .archive_mib = 4096,
    .capture_mib = 256,
    .table_mib = 256,
    .processes = 512,
};

// Of the profile "health", which may run every five minutes.
inline constexpr Limits kHealthLimits{
    .run_seconds = 240,
    .module_seconds = 240,
    .archive_seconds = 240,
    .tool_seconds = 60,
    .silence_seconds = 60,
    .run_mib = kUsualLimits.run_mib,
    .archive_mib = kUsualLimits.archive_mib,
    .capture_mib = kUsualLimits.capture_mib,
    .table_mib = kUsualLimits.table_mib,
    .processes = kUsualLimits.processes,
};

// The highest limits that can be set.
inline constexpr unsigned kMaxSeconds = 86400;
inline constexpr unsigned kMaxMib = 1 << 20;
inline constexpr unsigned kMaxProcesses = 1 << 20;

inline constexpr unsigned kMostValueBytes = 1
                                            << 18;  // of a single value that is read from a capture

// What the disk keeps free unless the user says otherwise: a share of it, at most so much.
inline constexpr unsigned kFreePercent = 5;
inline constexpr unsigned kMostFreeMib = 1024;

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

// "5 % of the disk, at most 1024 MiB", "100 MiB"
std::string free_text(const CollectOptions& asked);

}  // namespace qvhost
