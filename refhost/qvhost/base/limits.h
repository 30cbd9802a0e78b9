// The limits of a collection: whole run >= module >= archive >= command, and silence within a command.
#pragma once

#include <optional>
#include <string>

namespace qvhost {

// Seconds; what the user did not set is derived from what he did.
struct AskedLimits {
    std::optional<unsigned> run;
    std::optional<unsigned> module;
    std::optional<unsigned> tool;
    std::optional<unsigned> silence;
};

struct Limits {
    unsigned run = 0;
    unsigned module = 0;
    unsigned archive = 0;  // a tool that packs the logs of a whole system
    unsigned tool = 0;
    unsigned silence = 0;  // of a tool that neither prints nor writes
    bool operator==(const Limits&) const = default;
};

inline constexpr unsigned kMostSeconds = 86400;

// Limits that do not contradict each other. Throws std::invalid_argument, with both limits named, if
// those that were asked for do.
Limits limits_for(const AskedLimits& asked);

// "tool 300 s, silence 120 s, ..." for people.
std::string text_of(const Limits& limits);

}  // namespace qvhost
