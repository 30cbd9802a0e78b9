#include "qvhost/cli/usage_error.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>

#include "qvhost/base/nearest.h"
#include "qvhost/cli/command_line.h"

namespace qvhost {

namespace {

using Words = std::vector<std::string>;

Words names_of(const std::vector<const CLI::App*>& commands) {
    Words names;
    for (const auto* one : commands) names.push_back(one->get_name());
    return names;
}

const CLI::App* command_named(const CLI::App& app, const Words& arguments) {
    for (const auto* one : commands_of(app)) {
        if (!arguments.empty() && one->get_name() == arguments[0]) return one;
    }
    return nullptr;
}

// "--log-dir" of "--log-dir=DIR".
std::string option_name(const std::string& word) { return word.substr(0, word.find('=')); }

// The option that the word names; null: there is none.
const CLI::Option* option_named(const CLI::App& command, const std::string& word) {
    for (const auto* option : options_of(command)) {
        if (option->check_name(option_name(word))) return option;
    }
    return nullptr;
}

bool takes_value(const CLI::Option& option) { return !option.get_type_name().empty(); }

// The first word that looks like an option and is none; empty: there is none.
std::string unknown_option(const CLI::App& command, const Words& arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const auto& word = arguments[i];
        if (word == "--") break;
        if (!word.starts_with("-") || word == "-") continue;
        const auto* option = option_named(command, word);
        if (!option) return option_name(word);
        if (takes_value(*option) && word.find('=') == std::string::npos) ++i;
    }
    return "";
}

Words long_options(const CLI::App& command) {
    Words names;
    for (const auto* option : options_of(command)) {
        for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
}

// What must be given and is not, "--log-dir DIR"; empty: nothing.
std::string missing(const CLI::App& command) {
    for (const auto* one : arguments_of(command)) {
        if (one->get_required() && one->count() == 0) return one->get_name(true);
    }
    for (const auto* one : options_of(command)) {
        if (one->get_required() && one->count() == 0)
            return "--" + one->get_lnames().front() + " " + one->get_type_name();
    }
    return "";
}

}  // namespace

std::string usage_error(const CLI::App& app, const Words& arguments, const CLI::ParseError& error) {
    const auto commands = names_of(commands_of(app));
    if (arguments.empty()) return "a command is missing: " + boost::join(commands, ", ");
    const auto* command = command_named(app, arguments);
    if (!command) {
        const auto& word = arguments[0];
        const std::string kind = word.starts_with("-") ? "option " : "command ";
        const auto meant = did_you_mean(word, word.starts_with("-") ? long_options(app) : commands);
        if (!meant.empty()) return "there is no " + kind + word + meant;
        return "there is no " + kind + word + "; the commands are " + boost::join(commands, ", ");
    }
    if (const auto word = unknown_option(*command, arguments); !word.empty()) {
        const auto meant = did_you_mean(word, long_options(*command));
        return command->get_name() + " has no option " + word +
               (meant.empty() ? "; it has " + boost::join(long_options(*command), ", ") : meant);
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error)) {
        const auto* last = option_named(*command, arguments.back());
        if (last && takes_value(*last))
            return option_name(arguments.back()) + " needs a value: " + last->get_type_name();
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error)) {
        if (const auto name = missing(*command); !name.empty())
            return command->get_name() + " needs " + name;
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error))
        return command->get_name() + " takes fewer arguments: " + usage_of(*command);
    return error.what();
}

std::string help_for(const CLI::App& app, const Words& arguments) {
    const auto* command = command_named(app, arguments);
    return command ? "qvhost " + command->get_name() + " --help" : "qvhost --help";
}

}  // namespace qvhost
