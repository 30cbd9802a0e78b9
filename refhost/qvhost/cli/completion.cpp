#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <string_view>

#include "qvhost/base/environment.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/base/plugin.h"
#include "qvhost/cli/command_line.h"
#include "store/store.h"
#include "store/typed_table.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

struct Candidates {
    Words words;
    bool are_paths = false;
    std::map<std::string, std::string> meanings = {};  // of words that the help explains
};

// The first clause of a description, for a shell's list.
std::string in_short(std::string_view description) {
    auto end = description.size();
    for (const std::string_view mark : {". ", "; ", ": ", " ("})
        end = std::min(end, description.find(mark));
    return std::string(description.substr(0, end));
}

// The typed word without the shell's quotes. Variables and patterns in it stay as they are.
std::string unquoted(std::string_view typed) {
    std::string word;
    char quote = 0;
    for (std::size_t i = 0; i < typed.size(); ++i) {
        const char c = typed[i];
        if (c == quote) {
            quote = 0;
        } else if (!quote && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < typed.size()) {
            word += typed[++i];
        } else {
            word += c;
        }
    }
    return word;
}

// The path that a word stands for.
fs::path path_of(const std::string& word) {
    const char* const home = std::getenv("HOME");
    return home && word.starts_with("~/") ? home + word.substr(1) : word;
}

bool is_report(const fs::path& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) return fs::exists(LogDir(path).store(), error);
    return path.extension() == ".sqlite";
}

bool is_machine(const fs::path& path) {
    std::error_code error;
    return fs::exists(path / "machine.json", error);
}

bool is_any_file(const fs::path& path) {
    std::error_code error;
    return !fs::is_directory(path, error);
}

// What begins with `word` and is wanted, and the directories on the way to it, with a "/".
Candidates paths(const std::string& word, const std::function<bool(const fs::path&)>& wanted) {
    Candidates found{{}, true};
    const auto name_begins = word.rfind('/') + 1;  // 0 if there is none
    const auto folder = word.substr(0, name_begins);
    const auto name_begin = word.substr(name_begins);
    std::error_code error;
    const fs::path searched = folder.empty() ? "." : path_of(folder);
    for (fs::directory_iterator entry(searched, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        if (!name.starts_with(name_begin) || (name.front() == '.' && name_begin.empty())) continue;
        std::error_code unreadable;
        if (wanted(entry->path())) {
            found.words.push_back(folder + name);
        } else if (entry->is_directory(unreadable)) {
            found.words.push_back(folder + name + "/");
        }
    }
    return found;
}

Words module_names() {
    Words names;
    const Plugin plugin(installed_plugin());
    for (const auto& module : plugin.modules()) names.push_back(module->GetName());
    return names;
}

Words table_names() {
    Words names;
    const Plugin plugin(installed_plugin());
    for (const auto& module : plugin.modules()) {
        module->InitCallbacks();
        for (const auto& [table, callbacks] : module->callbacks) names.push_back(table);
    }
    return names;
}

// The report is only read here: `show` and `query` complete a collection that was cut off.
Words table_names(const std::string& report) {
    Words names;
    const auto path = path_of(report);
    const Store store(fs::is_directory(path) ? LogDir(path).store() : path, Store::Mode::read);
    for (const auto name : kTypedTables) {
        if (!stored_columns(store, std::string(name)).empty()) names.emplace_back(name);
    }
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) names.push_back(table.id);
    }
    return names;
}

// What can stand for an argument or the value of an option, by the name that the help gives it.
Candidates values(const std::string& kind, const std::string& word, const std::string& report) {
    if (kind == "DIR") return paths(word, [](const fs::path&) { return false; });
    if (kind == "FILE" || kind == "PATH") return paths(word, is_any_file);
    if (kind == "REPORT" || kind == "OLD" || kind == "NEW") return paths(word, is_report);
    if (kind == "MACHINE") return paths(word, is_machine);
    if (kind == "NAME") return {module_names()};
    if (kind == "ID" || kind == "TABLE")
        return {report.empty() ? table_names() : table_names(report)};
    if (kind.find('|') != std::string::npos) {
        Candidates found;
        boost::split(found.words, kind, boost::is_any_of("|"));
        return found;
    }
    return {};
}

const CLI::Option* find_option(const CLI::App& command, const std::string& word) {
    for (const auto* option : options_of(command)) {
        for (const auto& name : option->get_lnames()) {
            if (word == "--" + name) return option;
        }
    }
    return nullptr;
}

bool takes_value(const CLI::Option* option) { return option && !option->get_type_name().empty(); }

void add(Candidates& found, const std::string& word, const std::string& description) {
    found.words.push_back(word);
    found.meanings[word] = in_short(description);
}

Candidates option_names(const CLI::App& command) {
    Candidates found;
    for (const auto* option : options_of(command)) {
        for (const auto& name : option->get_lnames())
            add(found, "--" + name, option->get_description());
    }
    return found;
}

Candidates command_names(const CLI::App& app) {
    Candidates found;
    for (const auto* command : commands_of(app))
        add(found, command->get_name(), command->get_description());
    return found;
}

// `before`: the words between the command and the one that is typed.
Candidates of_command(const CLI::App& command, const Words& before, const std::string& word) {
    const auto arguments = arguments_of(command);
    Words given;
    const CLI::Option* waiting = nullptr;  // for its value
    bool only_arguments = false;
    for (const auto& one : before) {
        if (waiting) {
            waiting = nullptr;
        } else if (!only_arguments && one == "--") {
            only_arguments = true;
        } else if (!only_arguments && one.starts_with("-")) {
            const auto* option = find_option(command, one);
            waiting = takes_value(option) ? option : nullptr;
        } else {
            given.push_back(one);
        }
    }
    const bool has_report = !arguments.empty() && arguments[0]->get_name(true) == "REPORT";
    const auto report = has_report && !given.empty() ? given[0] : "";
    if (waiting) return values(waiting->get_type_name(), word, report);
    if (!only_arguments && word.starts_with("-")) return option_names(command);
    if (arguments.empty()) return option_names(command);
    const auto place = std::min(given.size(), arguments.size() - 1);
    // The last argument can be given more than once only if it need not be given.
    if (given.size() > place && arguments[place]->get_required()) return option_names(command);
    return values(arguments[place]->get_name(true), word, report);
}

// Some shells split "--option=value" into "--option", "=", "value".
Words without_equal_signs(const Words& words) {
    Words joined;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool last = i + 1 == words.size();
        if (words[i] == "=" && i > 0 && words[i - 1].starts_with("--")) {
            if (last) joined.emplace_back();
        } else {
            joined.push_back(words[i]);
        }
    }
    return joined;
}

Candidates candidates(const CLI::App& app, Words& words) {
    const auto word = words.back();
    words.pop_back();
    const auto commands = commands_of(app);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto found = std::find_if(commands.begin(), commands.end(), [&](const CLI::App* one) {
            return one->get_name() == words[i];
        });
        if (found == commands.end()) continue;
        const Words before(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
        return of_command(**found, before, word);
    }
    return word.starts_with("-") ? option_names(app) : command_names(app);
}

// The shell quotes paths but not words, and a word may come from an untrusted report: it must not
// become a command of the shell.
bool can_be_offered(const std::string& word, bool is_path) {
    if (is_path) return word.find('\n') == std::string::npos;
    return std::all_of(word.begin(), word.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-' || c == '.' || c == '/' || c == ':';
    });
}

}  // namespace

void write_completions(std::ostream& out, const CLI::App& app, std::vector<std::string> words,
                       bool with_meanings) {
    if (words.empty()) words.emplace_back();
    for (auto& word : words) word = unquoted(word);
    words = without_equal_signs(words);
    const auto word = words.back();
    auto found = candidates(app, words);
    std::sort(found.words.begin(), found.words.end());
    out << (found.are_paths ? "paths" : "words") << '\n';
    for (const auto& one : found.words) {
        if (!one.starts_with(word) || !can_be_offered(one, found.are_paths)) continue;
        out << one;
        if (with_meanings && found.meanings.contains(one)) out << '\t' << found.meanings[one];
        out << '\n';
    }
}

}  // namespace qvhost
