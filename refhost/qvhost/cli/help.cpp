#include "qvhost/cli/help.h"

#include <unistd.h>

#include <algorithm>

#include "qvhost/cli/command_line.h"
#include "show/terminal.h"
#include "show/visible.h"

namespace qvhost {

namespace {

constexpr unsigned kMaxWidth = 100;  // longer lines are hard to read
constexpr unsigned kWidthOfNoTerminal = 80;
constexpr std::size_t kTermColumn = 2;
constexpr std::size_t kTextColumn = 26;

std::string paragraph(const std::string& text, std::size_t indent, std::size_t width) {
    std::string lines;
    for (const auto& line : wrapped(text, width > indent + 20 ? width - indent : 20))
        lines += std::string(indent, ' ') + line + "\n";
    return lines;
}

// "  --option VALUE   what it does", the text in a column of its own.
std::string entry(const std::string& term, const std::string& text, std::size_t width) {
    auto lines = paragraph(text, kTextColumn, width);
    const auto head = std::string(kTermColumn, ' ') + term;
    if (head.size() + 2 > kTextColumn) return head + "\n" + lines;
    return lines.replace(0, head.size(), head);
}

std::string term_of(const CLI::Option& option) {
    if (option.get_positional()) return option.get_name(true);
    std::string term;
    for (const auto& name : option.get_snames()) term += "-" + name + ", ";
    for (const auto& name : option.get_lnames()) term += "--" + name;
    return option.get_type_name().empty() ? term : term + " " + option.get_type_name();
}

std::string description_of(const CLI::Option& option) {
    auto text = option.get_description();
    if (is_required_option(option)) text += " (required)";
    if (!option.get_default_str().empty()) text += " [" + option.get_default_str() + "]";
    return text;
}

}  // namespace

std::string HelpText::make_help(const CLI::App* command, std::string, CLI::AppFormatMode) const {
    const auto terminal = terminal_style(STDOUT_FILENO).width;
    const auto width = std::min(kMaxWidth, terminal > 0 ? terminal : kWidthOfNoTerminal);
    const auto& text = text_of(*command);
    const bool is_program = !command->get_parent();

    auto help = paragraph("Usage: " + usage_of(*command), 0, width) + "\n";
    help += paragraph(std::string(text.summary) + ".", 0, width);
    for (const char* const more : text.paragraphs) help += "\n" + paragraph(more, 0, width);

    const auto section = [&](const char* title, const std::string& entries) {
        if (!entries.empty()) help += std::string("\n") + title + ":\n" + entries;
    };
    std::string commands;
    for (const auto* one : commands_of(*command))
        commands += entry(one->get_name(), text_of(*one).summary, width);
    section("Commands", commands);

    std::string arguments;
    for (const auto* one : arguments_of(*command))
        arguments += entry(term_of(*one), description_of(*one), width);
    section("Arguments", arguments);

    std::string options;
    for (const auto* one : options_of(*command))
        options += entry(term_of(*one), description_of(*one), width);
    section("Options", options);

    // A command is not wrapped: it is there to be copied.
    std::string examples;
    for (const auto& example : text.examples)
        examples +=
            std::string("  ") + example.command + "\n" + paragraph(example.meaning, 6, width);
    section("Examples", examples);

    if (is_program)
        help += "\n" + paragraph("qvhost COMMAND --help tells more of a command.", 0, width);
    return help;
}

}  // namespace qvhost
