#include "qvhost/finish/reasons.h"

#include <algorithm>
#include <boost/algorithm/string/split.hpp>
#include <charconv>
#include <csignal>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "qvhost/base/plugin.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// What ends the collection of all BMC tables, as the log tells it; behind some a code follows.
struct Stop {
    const char* words;
    const char* reason;
};

constexpr Stop kBmcStops[] = {
    {"No BMC, return 4",                            "no BMC on this platform"                   },
    {"Fail to get the Product Name",                "the product name could not be read"        },
    {"Failed to get the Marlox path, exit",         "the program's directory could not be found"},
    {"Fail to get the Linux OS structure",          "the word size could not be read"           },
    {"Failed to start IPMI service,exit code:",     "the IPMI service did not start, exit code "},
    {"Signal terminal while starting IPMI service", "starting the IPMI service was killed"      },
    {"Failed to start IPMI service, could not",     "the IPMI service could not be started"     },
};

// Whether an IPMI tool speaks of an error in the first part of its answer.
bool holds_error(const fs::path& capture) {
    std::ifstream file(capture, std::ios::binary);
    std::string text(65536, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    for (const char* sign : {"Error", "Bad response", "Cannot open an IPMI driver"}) {
        if (text.find(sign) != std::string::npos) return true;
    }
    return false;
}

std::string tool_failed(const std::string& tool, const std::string& code) {
    if (code == "127") return tool + " is not installed (exit code 127)";
    if (code == "126") return tool + " cannot be run (exit code 126)";
    // A shell tells of a signal by 128 and the signal's number.
    int number = 0;
    std::from_chars(code.data(), code.data() + code.size(), number);
    if (number > 128 && number <= 128 + SIGTERM)
        return tool + " was killed by signal " + std::to_string(number - 128);
    return tool + " failed with code " + code;
}

// "exit code 127: not installed" -> "127"; empty if the tool ended in another way.
std::string exit_code(const CommandInfo& command) {
    const std::string words = "exit code ";
    if (!command.outcome.starts_with(words)) return "";
    const auto end = command.outcome.find_first_not_of("0123456789", words.size());
    return command.outcome.substr(words.size(), end - words.size());
}

// Whether the shell could not start the tool of a command that ended with this code.
bool did_not_run(const std::string& code) { return code == "127" || code == "126"; }

// Whether the text is the declared one, with any text for each of its places: "'{P}tool_{x}' show".
bool is_command(std::string_view text, std::string_view declared) {
    const auto literal = declared.substr(0, declared.find('{'));
    if (literal.empty() || !text.starts_with(literal)) return false;
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

}  // namespace

Evidence::Evidence(const LogDir& dir, fs::path tools, fs::file_time_type started,
                   const Store& store)
    : captures_(dir.path()),
      tools_(std::move(tools)),
      started_(started),
      commands_(store.commands()),
      declared_(declared_tables(store)) {
    boost::split(also_, store.meta("also"), [](char c) { return c == ','; });
    std::ifstream log(dir.log());
    const std::string mark = "[repo] ";
    for (std::string line; std::getline(log, line);) {
        const auto at = line.find(mark);
        if (at != std::string::npos) messages_.push_back(line.substr(at + mark.size()));
    }
}

const std::string* Evidence::behind(const std::string& words, std::string& text) const {
    for (const auto& message : messages_) {
        if (!message.starts_with(words)) continue;
        text = message.substr(words.size());
        return &text;
    }
    return nullptr;
}

bool Evidence::is_installed(const std::string& tool) const {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(tools_, ignored)) {
        if (entry.path().filename().string().starts_with(tool)) return true;
    }
    return false;
}

const DeclaredTable* Evidence::declared(const std::string& id) const {
    const auto found = std::find_if(declared_.begin(), declared_.end(),
                                    [&](const DeclaredTable& table) { return table.id == id; });
    return found == declared_.end() ? nullptr : &*found;
}

const CommandInfo* Evidence::last_command(const DeclaredTable& table) const {
    const auto last = [&](auto is_meant) {
        const auto found = std::find_if(commands_.rbegin(), commands_.rend(), is_meant);
        return found == commands_.rend() ? nullptr : &*found;
    };
    if (table.capture.empty()) return nullptr;
    const auto capture = (captures_ / table.capture).string();
    if (const auto* writer = last([&](const CommandInfo& c) { return writes(c, capture); }))
        return writer;
    return last([&](const CommandInfo& c) { return is_command(c.text, table.command); });
}

std::string Evidence::from_command(const DeclaredTable& table) const {
    const auto* command = last_command(table);
    if (!command || !command->cut_off) return "";
    return table.tool + ": " + command->outcome;
}

std::string Evidence::from_log(const DeclaredTable& table) const {
    const auto& label = table.log_label;
    if (label.empty()) return "";
    std::string rest;
    if (behind("Failed to get " + label + " info,exit code:", rest))
        return tool_failed(table.tool, rest);
    if (behind("Signal terminal while getting " + label + " info", rest))
        return table.tool + " was killed, or took too long";
    if (behind("Failed to get " + label + " info", rest))
        return table.tool + " could not be started";
    for (const auto& stop : kBmcStops) {
        if (!behind(stop.words, rest)) continue;
        const std::string reason = stop.reason;
        return reason.ends_with(' ') ? reason + rest : reason;
    }
    return "";
}

std::string Evidence::from_capture(const DeclaredTable& table) const {
    const auto& tool = table.tool;
    const auto* command = last_command(table);
    const auto code = command ? exit_code(*command) : "";
    const bool missing = table.in_qv_tools && !is_installed(tool);

    const auto capture = captures_ / table.capture;
    std::error_code error;
    const bool is_file = fs::is_regular_file(capture, error);
    if (!is_file || fs::last_write_time(capture, error) < started_) {
        if (!command)
            return table.not_asked.empty() ? "not asked for on this server" : table.not_asked;
        if (missing) return tool + " is not in qv_tools";
        return code.empty() || code == "0" ? tool + " left no " + table.capture
                                           : tool_failed(tool, code);
    }
    const bool is_empty = fs::file_size(capture, error) == 0;
    if (missing && (is_empty || did_not_run(code))) return tool + " is not in qv_tools";
    if (is_empty && table.in_qv_tools) return tool + " printed nothing";
    if (did_not_run(code)) return tool_failed(tool, code);
    if (is_empty) return tool + " printed nothing";
    if (holds_error(capture)) return tool + " answered with an error, see " + table.capture;
    return "nothing to report in " + table.capture;
}

std::string Evidence::why_empty(const std::string& id) const {
    const auto* table = declared(id);
    if (!table) return "unknown";
    const auto& filled = table->filled;
    if (filled == "never") return "not collected";
    if (filled == "not on Linux") return "not collected on Linux";
    if (is_operation(filled) && std::find(also_.begin(), also_.end(), filled) == also_.end())
        return "collected only with --also " + filled;
    if (table->tool.empty()) return "nothing to report";
    for (const auto& told : {from_command(*table), from_log(*table)}) {
        if (!told.empty()) return told;
    }
    return from_capture(*table);
}

std::string Evidence::why_partial(const std::string& id) const {
    const auto* table = declared(id);
    return table ? from_command(*table) : "";
}

}  // namespace qvhost
