// The commands of qvfleet. Each returns the exit status and throws std::runtime_error for what cannot be done.
#pragma once

#include <iosfwd>
#include <stdexcept>

#include "qvfleet/options.h"

namespace qvhost::fleet {

inline constexpr int kDone = 0;
inline constexpr int kCouldNot = 1;
inline constexpr int kWrongUse = 2;
inline constexpr int kSomeSkipped = 3;

// The command line cannot be meant so.
struct WrongUse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

int import_command(const Options& options);
int status_command(const Options& options);
int query_command(const Options& options);
int export_command(const Options& options);
int forget_command(const Options& options);
int demo_command(const Options& options, bool has_database);

}  // namespace qvhost::fleet
