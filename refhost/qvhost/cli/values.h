// What values an option takes, and what is said of others. The checks add no words to the help: the descriptions
// already say what is allowed.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qvhost {

std::string not_empty(const std::string& text);

CLI::Validator one_of(const std::vector<std::string>& values);

CLI::Validator range(unsigned least, unsigned most);

// "90s", "30m", "2h", "1d" or "90" becomes that many seconds.
CLI::Validator seconds_of_time();

// "20M", "1G", "500K" or "4096" becomes that many bytes, by 1024; at least one.
CLI::Validator bytes_of_size();

}  // namespace qvhost
