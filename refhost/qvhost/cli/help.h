// How --help prints a command.
#pragma once

#include <CLI/CLI.hpp>

namespace qvhost {

// --help: usage, what the command does, its arguments and options, examples.
class HelpText : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* command, std::string name,
                          CLI::AppFormatMode mode) const override;
};

}  // namespace qvhost
