#include "qvhost/finish/commands.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

namespace qvhost {

namespace {

std::string unescaped(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            out += text[++i] == 'n' ? '\n' : text[i];
        } else {
            out += text[i];
        }
    }
    return out;
}

constexpr struct {
    const char* word;  // in the log
    const char* text;
} kStops[] = {
    {"time",     "stopped at its time limit"        },
    {"silence",  "stopped because it said no more"  },
    {"deadline", "stopped when the time was used up"},
};

std::string signal_text(int signal) { return "killed by signal " + std::to_string(signal); }

// Sets how a command ended that was not stopped.
void set_outcome(CommandInfo& command, int status) {
    if (status == 0) {
        command.outcome.clear();
    } else if (status == -1) {
        command.outcome = "it could not be started";
    } else if (WIFSIGNALED(status)) {
        command.outcome = signal_text(WTERMSIG(status));
        command.cut_off = true;
    } else {
        const int code = WEXITSTATUS(status);
        command.outcome = "exit code " + std::to_string(code);
        if (code == 127) command.outcome += ": not installed";
        // A shell exits with 128 and the signal's number if a signal ended the tool.
        command.cut_off = code > 128 && code <= 128 + 64;
        if (command.cut_off) command.outcome += ": " + signal_text(code - 128);
    }
}

// "< 0.112 0", "< 2.013 9 silence", "< 7.027 9 time 4711 4712"
void set_end(CommandInfo& command, const std::string& line) {
    std::istringstream words(line);
    char mark = 0;
    double seconds = 0;
    int status = 0;
    if (!(words >> mark >> seconds >> status) || mark != '<') return;
    command.seconds = seconds;
    command.cut_off = false;
    set_outcome(command, status);
    std::string reason;
    words >> reason;
    for (const auto& [word, text] : kStops) {
        if (reason != word) continue;
        command.outcome = text;
        command.cut_off = true;
    }
    for (int pid = 0; words >> pid;)
        command.outcome += "; process " + std::to_string(pid) + " could not be ended and was left";
}

// "! 5 /log/raidevents.txt": what the command wrote could not be read to its end.
void set_unread(std::vector<CommandInfo>& commands, const std::string& line) {
    int error = 0;
    int path_at = 0;
    if (std::sscanf(line.c_str(), "! %d %n", &error, &path_at) != 1 || path_at == 0) return;
    const auto path = unescaped(line.substr(static_cast<std::size_t>(path_at)));
    const auto writer = std::find_if(commands.rbegin(), commands.rend(),
                                     [&](const CommandInfo& c) { return writes(c, path); });
    if (writer == commands.rend()) return;
    writer->cut_off = true;
    writer->outcome =
        "what it wrote could not be read to its end: " + std::generic_category().message(error);
}

}  // namespace

std::vector<CommandInfo> read_commands(const std::filesystem::path& log) {
    std::vector<CommandInfo> commands;
    std::ifstream file(log, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("> ")) {
            commands.push_back(
                {unescaped(line.substr(2)), 0, "it was running when the collection ended", true});
        } else if (line.starts_with("! ")) {
            set_unread(commands, line);
        } else if (!commands.empty()) {
            set_end(commands.back(), line);
        }
    }
    return commands;
}

}  // namespace qvhost
