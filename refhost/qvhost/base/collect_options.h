// The options of a collection, each described once. The command line, its help, the manual page, the
// completion and the settings of the collecting child are made of these rows.
#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

struct CollectOption {
    // The member of CollectOptions that gets the value. Its type says what can be given: a flag (bool),
    // a number, a size in bytes, a text, or a list, for which the option is repeated.
    using Place =
        std::variant<bool CollectOptions::*, unsigned CollectOptions::*,
                     std::optional<unsigned> CollectOptions::*,
                     std::optional<std::uint64_t> CollectOptions::*, std::string CollectOptions::*,
                     std::filesystem::path CollectOptions::*,
                     std::vector<std::string> CollectOptions::*>;
    enum class Use {
        optional,
        required,
        internal,  // never offered on the command line: for the collecting child alone
    };
    // For numbers, in the option's `value`, and sizes, in bytes.
    struct Range {
        std::uint64_t usual =
            0;  // what it is unless the user says otherwise; more than `most`: all
        std::uint64_t least = 0;
        std::uint64_t most = 0;
        std::uint64_t plain = 1;  // what a size counts that has no unit
    };

    const char* name;  // on the command line with "--" before it
    Place place;
    Use use;
    std::string value;  // what it takes, as the help names it: "DIR", "SECONDS", "pmc|fru0"
    Range range;
    std::string meaning;  // for people
};

const std::vector<CollectOption>& collect_options();

// A size of any number of bytes but none. It is not limited unless the user says so.
inline constexpr auto kAllBytes = std::numeric_limits<std::uint64_t>::max();
inline constexpr CollectOption::Range kAnySize{kAllBytes, 1, kAllBytes - 1};

bool is_size(const CollectOption& row);

// "300", "256MiB", "all"
std::string usual_text(const CollectOption& row);

// The options as "NAME=VALUE" texts, each ended by a NUL, for the collecting child. A value has no NUL in
// it, since it came from a command line.
std::string settings_of(const CollectOptions& options);

// Reads them again. Throws std::runtime_error for a text that settings_of() does not write.
CollectOptions options_from(std::string_view settings);

}  // namespace qvhost
