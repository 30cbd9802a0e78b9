// The options of a collection, each described once. The command line, its help, the manual page, the
// completion and the settings of the collecting child are made of these rows.
#pragma once

#include <cstdint>
#include <filesystem>
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
    // For numbers. The unit is the option's `value`.
    struct Range {
        unsigned usual = 0;  // what it is unless the user says otherwise; more than `most`: all
        unsigned least = 0;
        unsigned most = 0;
    };

    const char* name;  // on the command line with "--" before it
    Place place;
    Use use;
    std::string value;  // what it takes, as the help names it: "DIR", "SECONDS", "pmc|fru0"
    Range range;
    std::string meaning;  // for people
};

const std::vector<CollectOption>& collect_options();

// "300", "all"
std::string usual_text(const CollectOption::Range& range);

// The options as "NAME=VALUE" texts, each ended by a NUL, for the collecting child. A value has no NUL in
// it, since it came from a command line.
std::string settings_of(const CollectOptions& options);

// Reads them again. Throws std::runtime_error for a text that settings_of() does not write.
CollectOptions options_from(std::string_view settings);

}  // namespace qvhost
