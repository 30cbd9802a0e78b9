#include "qvhost/commands.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <string>

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

std::string outcome_of(int status, double seconds, unsigned tool_timeout) {
    if (status == 0) return "";
    if (status == -1) return "it could not be started";
    if (WIFSIGNALED(status)) {
        const auto signal = "killed by signal " + std::to_string(WTERMSIG(status));
        if (WTERMSIG(status) != SIGKILL || seconds < tool_timeout) return signal;
        return "stopped at its time limit, its output is partial (" + signal + ")";
    }
    const int code = WEXITSTATUS(status);
    if (code == 127) return "exit code 127: not installed";
    // What a shell says of a tool that a signal ended.
    if (code > 128 && code <= 128 + 64)
        return "exit code " + std::to_string(code) + ": killed by signal " +
               std::to_string(code - 128);
    return "exit code " + std::to_string(code);
}

}  // namespace

std::vector<CommandInfo> read_commands(const std::filesystem::path& log, unsigned tool_timeout) {
    std::vector<CommandInfo> commands;
    std::ifstream file(log, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("> ")) {
            commands.push_back(
                {unescaped(line.substr(2)), 0, "it was running when the collection ended"});
            continue;
        }
        double seconds = 0;
        int status = 0;
        if (commands.empty() || std::sscanf(line.c_str(), "< %lf %d", &seconds, &status) != 2)
            continue;
        commands.back().seconds = seconds;
        commands.back().outcome = outcome_of(status, seconds, tool_timeout);
    }
    return commands;
}

}  // namespace qvhost
