// What is wrong with a command line, in words of this program's own.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qvhost {

// One line: what is wrong, and the nearest name where one is unknown. `error` is what parsing these arguments gave.
std::string usage_error(const CLI::App& app, const std::vector<std::string>& arguments,
                        const CLI::ParseError& error);

// "qvhost show --help", for the command that was meant.
std::string help_for(const CLI::App& app, const std::vector<std::string>& arguments);

}  // namespace qvhost
