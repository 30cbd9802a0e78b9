// What values an option takes, and what is said of others. The checks add no words to the help: the descriptions
// already say what is allowed.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "qvhost/base/collect_options.h"

namespace qvhost {

std::string not_empty(const std::string& text);

CLI::Validator one_of(const std::vector<std::string>& values);

CLI::Validator range(std::uint64_t least, std::uint64_t most);

// "90s", "30m", "2h", "1d" or "90" becomes that many seconds.
CLI::Validator seconds_of_time();

// "500K", "20M" or "1GiB" becomes that many bytes, by 1024; a number without a unit counts what the range says.
// (CLI11's own reads 010 as eight, M alone as one of it, and MB as MiB.)
CLI::Validator bytes_of_size(const CollectOption::Range& range);

}  // namespace qvhost
