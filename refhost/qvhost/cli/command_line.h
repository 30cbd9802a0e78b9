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

// What a command line says, once it is parsed.
struct ParsedArguments {
    CollectOptions collect;
    std::filesystem::path machine;
    RecordOptions record;
    ShowOptions show;
    std::filesystem::path list;  // the log directory
    OpenOptions open;
    BundleOptions bundle;
    std::filesystem::path verify;  // the bundle
    QueryOptions query;
    ExportOptions exporting;
    CheckOptions check;
    DiffOptions diff;
    ExplainOptions explain;
    DoctorOptions doctor;
    struct {
        int settings = -1;
        int lifeline = -1;
    } child;  // descriptors of the collecting child (collect/child.h)
};

// `parsed` gets what is parsed; it outlives the result.
std::unique_ptr<CLI::App> command_line(ParsedArguments& parsed);

struct Example {
    const char* command;
    const char* meaning;
};

// What help and manual say about a command, or about the program, beside its options.
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

// An option, not an argument, that must be given.
bool is_required_option(const CLI::Option& option);

// "qvhost query [OPTION]... REPORT SQL": the usage line.
std::string usage_of(const CLI::App& command);

// The manual page qvhost(1), as roff.
void write_manual(std::ostream& out, const CLI::App& app);

// Writes how the last word of a command line could be completed: "words" or "paths" in the first line,
// then one candidate a line; `with_meanings` what it means, where the help says so, behind a tabulator. `words`
// are as they were typed, without the program's name.
void write_completions(std::ostream& out, const CLI::App& app, std::vector<std::string> words,
                       bool with_meanings);

}  // namespace qvhost
