// The command line: each command and option is described once, here. What --help prints, the manual
// page and the completion in a shell are made of that description.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "qvhost/base/options.h"

namespace qvhost {

// What the user asked for.
struct Asked {
    CollectOptions collect;
    std::filesystem::path machine;
    ShowOptions show;
    QueryOptions query;
    ExportOptions exporting;
    Stage stage;  // of the collecting child
    int lifeline = -1;
};

// `asked` gets what is parsed; it outlives the result.
std::unique_ptr<CLI::App> command_line(Asked& asked);

struct Example {
    const char* command;
    const char* meaning;
};

// What is told of a command beside its options; of the program itself, too.
struct CommandText {
    const char* name;
    const char* summary;
    std::vector<const char*> paragraphs;
    std::vector<Example> examples;
};
const CommandText& text_of(const CLI::App& command);

// Commands and options that people may use, in their order.
std::vector<const CLI::App*> commands_of(const CLI::App& app);
std::vector<const CLI::Option*> options_of(const CLI::App& command);
std::vector<const CLI::Option*> arguments_of(const CLI::App& command);

// "REPORT SQL": the arguments as a usage line has them.
std::string usage_of(const CLI::App& command);

// The manual page qvhost(1), as roff.
void write_manual(std::ostream& out, const CLI::App& app);

// What the last word of a command line could become, for a shell: "words" or "paths" in the first
// line, then a candidate a line. The words are as they were typed, without the program's name.
void write_completions(std::ostream& out, const CLI::App& app, std::vector<std::string> words);

}  // namespace qvhost
