#include "qvhost/finish/reasons.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "files/read_beginning.h"
#include "inventory/exit_codes.h"
#include "inventory/ipmi/aside.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/plugin.h"
#include "qvhost/finish/not_executable.h"
#include "runner/shell_words.h"
#include "show/visible.h"
#include "text/shell_error.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kReadBytes = 65536;     // read of a capture
constexpr std::size_t kMostCharacters = 200;  // of what a tool said

// Whether the text is the declared one, with any text for each of its places: "'{P}tool_{x}' show".
bool is_command(std::string_view text, std::string_view declared) {
    const auto literal = declared.substr(0, declared.find('{'));
    if (literal.empty() ? declared.empty() : !text.starts_with(literal)) return false;
    text.remove_prefix(literal.size());
    declared.remove_prefix(literal.size());
    while (!declared.empty()) {
        const auto close = declared.find('}');
        if (close == std::string_view::npos) return false;
        declared.remove_prefix(close + 1);
        const auto next = declared.substr(0, declared.find('{'));
        declared.remove_prefix(next.size());
        const auto at = declared.empty() ? text.rfind(next) : text.find(next);
        if (at == std::string_view::npos) return false;
        text.remove_prefix(at + next.size());
    }
    return text.empty();
}

bool is_operation(const std::string& name) {
    return std::any_of(std::begin(kOperations), std::end(kOperations),
                       [&](const Operation& one) { return name == one.name; });
}

using Lines = std::vector<std::string>;

Lines lines_of(const std::string& text) {
    Lines lines;
    boost::split(lines, text, [](char c) { return c == '\n'; });
    return lines;
}

Lines first_lines(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string text(kReadBytes, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    return lines_of(text);
}

std::string cut(const std::string& text) {
    return text.size() <= kMostCharacters ? text : text.substr(0, kMostCharacters) + "...";
}

// "Description = Controller 0 not found" -> "Controller 0 not found"; empty if it is another key's.
std::string value_of(std::string_view key, const std::string& line) {
    const auto equals = line.find('=');
    if (equals == std::string::npos || trimmed(line.substr(0, equals)) != key) return "";
    return trimmed(line.substr(equals + 1));
}

// storcli says first whether it could answer:
//     Status = Failure
//     Description = Controller 0 not found
std::string storcli_error(const Lines& lines) {
    bool failed = false;
    for (const auto& line : lines) {
        if (value_of("Status", line) == "Failure") failed = true;
        const auto description = failed ? value_of("Description", line) : "";
        if (!description.empty()) return description == "None" ? "Status = Failure" : description;
    }
    return failed ? "Status = Failure" : "";
}

std::string ipmi_error(const Lines& lines) {
    for (const auto& line : lines) {
        const std::string text(inventory::without_chatter(line));
        if (inventory::is_tool_error(text)) return trimmed(text);
    }
    return "";
}

// Where tools put their errors, beside their exit code.
struct ErrorForm {
    std::string_view tool;
    std::string (*find)(const Lines& lines);
};

constexpr auto kErrorForms = std::to_array<ErrorForm>({
    {"storcli",  storcli_error},
    {"ipmitool", ipmi_error   },
    {"ipmiutil", ipmi_error   },
});

// "/bin/sh: 1: lspci: not found": the shell could not start a part of the command.
bool is_shells_complaint(std::string_view line) {
    return line.find(": not found") != std::string_view::npos ||
           line.find("command not found") != std::string_view::npos ||
           line.ends_with(": Permission denied") || line.ends_with(": No such file or directory");
}

// What the shell says of the tool itself, "Permission denied", and not a shell that the tool has started of something
// else.
std::string shells_words_on(const std::string& tool, const Lines& lines) {
    for (const auto& line : lines) {
        if (const auto words = qvhost::shells_words_on(tool, trimmed(line)); !words.empty())
            return std::string(words);
    }
    return "";
}

// "... error while loading shared libraries: libx.so.1: cannot open shared object file: ..."
std::string missing_library(const Lines& lines) {
    constexpr std::string_view words = "error while loading shared libraries: ";
    for (const auto& line : lines) {
        const auto at = line.find(words);
        if (at == std::string::npos) continue;
        const auto name = line.substr(at + words.size());
        return name.substr(0, name.find(':'));
    }
    return "";
}

bool printed_nothing(const fs::path& capture) {
    std::error_code error;
    return fs::file_size(capture, error) == 0 && !error;
}

// Whether the tool did what it should and found no controller: "Controller 0 not found"
bool tells_absence(const std::string& error) {
    return error.find("Controller") != std::string::npos &&
           (error.find("not found") != std::string::npos || error.starts_with("No Controller"));
}

std::string end_of(const DeclaredTable& table, const CommandInfo& command) {
    const bool not_asked = !command.started && !command.stopped_by.empty();
    return (not_asked ? "" : table.tool + ": ") + outcome(command);
}

bool failed(const CommandInfo& command) {
    return command.exit.value_or(1) != 0 &&
           !inventory::ran_to_its_end(command.text, outcome(command));
}

}  // namespace

Reasons::Reasons(const LogDir& dir, ToolPlaces places, const CommandLog& log, const Store& store,
                 std::set<std::string> broken_off)
    : dir_(dir),
      places_(std::move(places)),
      log_(log),
      declared_(declared_tables(store)),
      broken_off_(std::move(broken_off)) {
    boost::split(also_, store.meta("also"), [](char c) { return c == ','; });
    std::istringstream messages(read_beginning(dir.log(), kMostLogBytes));
    const std::string words = "[repo] Product name(20bytes):";
    for (std::string line; !product_is_logged_ && std::getline(messages, line);) {
        const auto at = line.find(words);
        if (at == std::string::npos) continue;
        product_is_logged_ = true;
        product_ = line.substr(at + words.size());
        // A line end within it is written \n.
        product_ = trimmed(product_.substr(0, product_.find('\\')));
    }
}

const DeclaredTable* Reasons::declared(const std::string& id) const {
    const auto found = std::find_if(declared_.begin(), declared_.end(),
                                    [&](const DeclaredTable& table) { return table.id == id; });
    return found == declared_.end() ? nullptr : &*found;
}

std::string Reasons::section_of(const std::string& module, const DeclaredTable& table) const {
    if (is_operation(table.filled)) return std::string(kAlsoMark) + table.filled;
    return std::string(kModuleMark) + module;
}

template <class Test>
const CommandInfo* Reasons::last_in(const std::string& section, Test is_meant) const {
    for (auto i = log_.commands.size(); i-- > 0;) {
        const bool is_there = log_.sections[i] == section || log_.sections[i].empty();
        if (is_there && is_meant(log_.commands[i])) return &log_.commands[i];
    }
    return nullptr;
}

const CommandInfo* Reasons::maker(const std::string& section, const DeclaredTable& table) const {
    if (table.capture.empty()) return nullptr;
    const auto writes_it = [&](const CommandInfo& command) {
        const auto files = captures_of(command.text, dir_.path());
        return std::find(files.begin(), files.end(), table.capture) != files.end();
    };
    if (const auto* writer = last_in(section, writes_it)) return writer;
    return last_in(section, [&](const CommandInfo& command) {
        return is_command(command.text, table.command);
    });
}

fs::path Reasons::file_of(const CommandInfo& command) const {
    const auto path = runner::shell_word(command.text);
    const auto started = places_.started.find(command.tool);
    if (path.find('/') != std::string::npos)
        return started == places_.started.end() ? fs::path(path) : started->second;
    std::vector<std::string> directories;
    boost::split(directories, places_.search_path, [](char c) { return c == ':'; });
    std::error_code ignored;
    for (const auto& directory : directories) {
        auto file = fs::path(directory) / path;
        if (!directory.empty() && fs::exists(file, ignored)) return file;
    }
    return {};
}

// Whether the tool's file is known not to be there.
bool Reasons::is_missing(const CommandInfo& command) const {
    if (places_.vendor_tools.empty()) return false;
    std::error_code ignored;
    const auto file = file_of(command);
    return file.empty() || !fs::exists(file, ignored);
}

// What the tool said first: on standard error, or where that goes into the capture, there.
std::string Reasons::first_words(const DeclaredTable& table, const CommandInfo& command) const {
    for (const auto& lines :
         {lines_of(command.standard_error), first_lines(dir_.path() / table.capture)}) {
        for (const auto& line : lines) {
            const std::string text = trimmed(inventory::without_chatter(line));
            if (!text.empty()) return cut(text);
        }
    }
    return "";
}

// What the shell said of the tool; empty: nothing.
std::string Reasons::shells_words(const DeclaredTable& table, const CommandInfo& command) const {
    for (const auto& lines :
         {lines_of(command.standard_error), first_lines(dir_.path() / table.capture)}) {
        if (auto words = shells_words_on(command.tool, lines); !words.empty()) return words;
    }
    return "";
}

// Whether there is such a tool, be it one that cannot be run. In a replay a recorded one has a file also where the
// shell had found none.
bool Reasons::is_installed(const DeclaredTable& table, const CommandInfo& command) const {
    std::error_code ignored;
    const auto file = file_of(command);
    if (places_.vendor_tools.empty() || !fs::is_regular_file(file, ignored)) return false;
    return command.exit != kNotFound || !why_not_executable(file).empty() ||
           shells_words(table, command).empty();
}

// Why the shell could not start it, or its loader could not load it; empty: it ran, and something that it
// started did not.
std::string Reasons::why_not_started(const DeclaredTable& table, const CommandInfo& command) const {
    const auto& tool = command.tool;
    for (const auto& lines :
         {lines_of(command.standard_error), first_lines(dir_.path() / table.capture)}) {
        if (const auto library = missing_library(lines); !library.empty())
            return tool + " cannot be run: it needs the library " + library +
                   ", which is not installed";
    }
    const auto code = " (exit code " + std::to_string(*command.exit) + ")";
    if (is_missing(command)) {
        if (!table.in_qv_tools) return tool + " is not installed" + code;
        if (const auto why = places_.refused.find(tool); why != places_.refused.end())
            return why->second;
        std::vector<std::string> others;
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(places_.vendor_tools, ignored)) {
            auto name = entry.path().filename().string();
            if (name.starts_with(table.tool)) others.push_back(std::move(name));
        }
        std::sort(others.begin(), others.end());
        return tool + " is not in qv_tools" +
               (others.empty() ? "" : "; " + boost::join(others, " and ") + " is there");
    }
    const bool knows_places = !places_.vendor_tools.empty();
    if (knows_places) {
        if (const auto why = why_not_executable(file_of(command)); !why.empty())
            return tool + " cannot be run: " + why;
    }
    if (const auto words = shells_words(table, command); !words.empty())
        return *command.exit == kNotFound ? tool + " is not installed" + code
                                          : tool + " cannot be run: " + words;
    if (*command.exit == kNotFound) return knows_places ? "" : tool + " is not installed" + code;
    return first_words(table, command).empty() ? tool + " cannot be run: exit code 126" : "";
}

// The error that the tool itself tells of where it tells of errors; empty: none.
std::string Reasons::answered_error(const DeclaredTable& table, const CommandInfo& command) const {
    for (const auto& form : kErrorForms) {
        if (form.tool != table.tool) continue;
        for (const auto& lines :
             {first_lines(dir_.path() / table.capture), lines_of(command.standard_error)}) {
            if (const auto error = form.find(lines); !error.empty()) return cut(error);
        }
    }
    return "";
}

// Why the command's tool could not be run; empty: it was.
std::string Reasons::why_not_run(const DeclaredTable& table, const CommandInfo& command) const {
    if (was_cut_off(command)) return "";
    if (*command.exit == kCannotRun || *command.exit == kNotFound)
        return why_not_started(table, command);
    // A shell may make something of a file that is no program.
    const bool is_empty = printed_nothing(dir_.path() / table.capture);
    if ((*command.exit == 0 && !is_empty) || is_missing(command) || places_.vendor_tools.empty())
        return "";
    const auto why = why_not_executable(file_of(command));
    return why.empty() ? "" : command.tool + " cannot be run: " + why;
}

// What went wrong with the command; empty: it ran and told of no error.
std::string Reasons::trouble(const DeclaredTable& table, const CommandInfo& command) const {
    if (was_cut_off(command)) return end_of(table, command);
    if (auto why = why_not_run(table, command); !why.empty()) return why;
    if (const auto error = answered_error(table, command); !error.empty())
        return table.tool + " answered: " + error;
    if (!failed(command)) return "";
    const auto said = first_words(table, command);
    return table.tool + " failed with code " + std::to_string(*command.exit) +
           (said.empty() ? "" : ": " + said);
}

// The plug-in takes the product's name from dmidecode, whose errors its command hides; it also asks
// dmidecode for everything.
std::string Reasons::why_no_bmc() const {
    const CommandInfo* dmidecode = nullptr;
    DeclaredTable table;
    table.tool = "dmidecode";
    for (const auto& command : log_.commands) {
        const auto captures = captures_of(command.text, dir_.path());
        if (command.tool != table.tool || captures.empty()) continue;
        dmidecode = &command;
        table.capture = captures.front();
    }
    auto product = product_;
    constexpr std::string_view key = "Product Name:";
    for (const auto& line : dmidecode ? first_lines(dir_.path() / table.capture) : Lines()) {
        const auto text = trimmed(line);
        if (!text.starts_with(key)) continue;
        const auto name = trimmed(text.substr(key.size()));
        // The log has the beginning of it.
        if ((product_is_logged_ && product_.empty()) || !name.starts_with(product_)) continue;
        product = name;
        break;
    }
    if (!product.empty())
        return "not asked: the plug-in knows no BMC of the product \"" + cut(product) + "\"";
    if (!dmidecode) return "not asked: the product's name could not be read";
    if (const auto why = trouble(table, *dmidecode); !why.empty())
        return "not asked: the product is not known, since " + why;
    return "not asked: dmidecode tells no product name";
}

// Of "lspci | grep SAS2308 | wc -l" the exit code is that of its last command. Whether the first one failed is
// known if it was run alone as well; else what it said must do. Empty: nothing tells of a failure.
std::string Reasons::why_pipeline_failed(const CommandInfo& pipeline) const {
    if (pipeline.text.find('|') == std::string::npos) return "";
    const CommandInfo* alone = nullptr;
    for (const auto& command : log_.commands) {
        if (command.tool == pipeline.tool && command.started &&
            command.text.find('|') == std::string::npos)
            alone = &command;
    }
    DeclaredTable table;
    table.tool = pipeline.tool;
    if (alone) {
        const auto captures = captures_of(alone->text, dir_.path());
        if (!captures.empty()) table.capture = captures.front();
        return trouble(table, *alone);
    }
    const auto said = first_words(table, pipeline);
    return said.empty() ? "" : short_text(pipeline) + " said: " + said;
}

// Which of the commands that decide whether the table's is run said no, and why; empty: none of them.
std::string Reasons::why_gate_closed(const std::string& section, const DeclaredTable& table) const {
    const CommandInfo* before = nullptr;
    for (std::string gate : table.gates) {
        const bool need_only_run = gate.ends_with(" >");
        if (need_only_run) gate.resize(gate.size() - 2);
        const auto* command = last_in(section, [&](const CommandInfo& one) {
            return is_command(runner::without_redirections(one.text), gate) ||
                   one.text.starts_with(gate + " ");
        });
        if (!command) {
            if (!before) return "unknown";
            return before->tool == "dmidecode" || before->tool == "uname" ? why_no_bmc()
                                                                          : "unknown";
        }
        before = command;
        const auto name = short_text(*command);
        if (!command->started && !command->stopped_by.empty()) return outcome(*command);
        if (need_only_run && command->started) continue;
        if (was_cut_off(*command)) return "not asked: " + name + ": " + outcome(*command);
        for (const auto& line : lines_of(command->standard_error)) {
            if (is_shells_complaint(trimmed(line)))
                return "not asked: " + name + " said: " + cut(trimmed(line));
        }
        if (command->exit == kNotFound)
            return "not asked: " + command->tool + " is not installed (exit code 127)";
        if (*command->exit != 0) return "not asked: " + name + ": " + outcome(*command);
    }
    const auto why = before ? why_pipeline_failed(*before) : "";
    return why.empty() ? "" : "not asked: " + why;
}

std::string Reasons::why_not_asked(const std::string& module, const DeclaredTable& table) const {
    if (broken_off_.contains(is_operation(table.filled) ? std::string(kAlsoMark) : module))
        return "not asked: the collection ended before";
    if (auto why = why_gate_closed(section_of(module, table), table); !why.empty()) return why;
    return table.not_asked.empty() ? "not asked for on this server" : table.not_asked;
}

std::string Reasons::why_empty(const std::string& module, const std::string& id) const {
    const auto* table = declared(id);
    if (!table) return "unknown";
    const auto& filled = table->filled;
    if (filled == "never") return "not collected";
    if (filled == "not on Linux") return "not collected on Linux";
    if (is_operation(filled) && std::find(also_.begin(), also_.end(), filled) == also_.end())
        return "collected only with --also " + filled;
    if (table->tool.empty()) return "nothing to report";
    const auto* command = maker(section_of(module, *table), *table);
    if (!command) return why_not_asked(module, *table);
    if (auto why = trouble(*table, *command); !why.empty()) return why;
    const auto capture = dir_.path() / table->capture;
    std::error_code ignored;
    if (!fs::is_regular_file(capture, ignored)) return table->tool + " left no " + table->capture;
    if (printed_nothing(capture)) return table->tool + " printed nothing";
    return "nothing to report in " + table->capture;
}

std::string Reasons::why_partial(const std::string& module, const std::string& id) const {
    const auto* table = declared(id);
    if (!table) return "";
    const auto* command = maker(section_of(module, *table), *table);
    return command && was_cut_off(*command) ? end_of(*table, *command) : "";
}

// Whether one of the module's commands with this tool did what it should, be it to count controllers.
bool Reasons::has_answered(const std::string& module, const std::string& tool) const {
    const auto section = std::string(kModuleMark) + module;
    for (std::size_t i = 0; i < log_.commands.size(); ++i) {
        const auto& command = log_.commands[i];
        if (log_.sections[i] != section || !command.tool.starts_with(tool)) continue;
        const auto captures = captures_of(command.text, dir_.path());
        DeclaredTable asked;
        asked.tool = tool;
        asked.capture = captures.empty() ? "" : captures.front();
        if (!asked.capture.empty() && trouble(asked, command).empty()) return true;
    }
    return false;
}

std::string Reasons::why_failed(const ModuleInfo& module, bool has_no_bmc) const {
    std::string first;
    for (const auto& [id, title, layout, records, reason] : module.tables) {
        const auto* table = declared(id);
        if (!table || table->tool.empty() || table->filled != "always") continue;
        if (has_no_bmc && is_bmc_tool(table->tool)) continue;
        const auto* command = maker(section_of(module.name, *table), *table);
        if (!command) continue;
        if (!is_installed(*table, *command) && !why_not_run(*table, *command).empty()) continue;
        const auto why = trouble(*table, *command);
        if (why.empty() || tells_absence(answered_error(*table, *command)) ||
            has_answered(module.name, table->tool))
            return "";
        if (first.empty()) first = why;
    }
    return first;
}

}  // namespace qvhost
