// The limits of a collection: whole run >= module >= archive >= tool, and silence within a tool.
#pragma once

#include <string>

#include "qvhost/base/options.h"

namespace qvhost {

struct Limits {
    unsigned run_seconds = 0;
    unsigned module_seconds = 0;
    unsigned archive_seconds = 0;  // a tool that packs the logs of a whole system
    unsigned tool_seconds = 0;
    unsigned silence_seconds = 0;  // of a tool that neither prints nor writes nor works
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
};

// Of the profile "health", which may run every five minutes.
inline constexpr Limits kHealthLimits{
    .run_seconds = 240,
    .module_seconds = 240,
    .archive_seconds = 240,
    .tool_seconds = 60,
    .silence_seconds = 60,
};

inline constexpr unsigned kMaxSeconds = 86400;  // the highest limit that can be set

// Limits that do not contradict each other: what was asked for stands, what was not fits around it.
// Throws std::invalid_argument, with both limits named, if those that were asked for do.
Limits limits_for(const CollectOptions& asked);

// "ipmitool=900,storcli=60". Throws std::invalid_argument for what is no tool's name and seconds.
std::string tool_limits_text(const CollectOptions& asked);

// "run 7200 s, module 3600 s, ..." for people.
std::string text_of(const Limits& limits);

}  // namespace qvhost
