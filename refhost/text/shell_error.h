// What a shell and the loader of programs say of a tool that they cannot start, and with which exit code.
#pragma once

#include <string_view>

namespace qvhost {

inline constexpr int kCannotRun = 126;
inline constexpr int kNotFound = 127;

// "Permission denied" of "sh: 1: /opt/qv_tools/storcli_x64: Permission denied", if the tool is storcli_x64. Empty: the
// line says something else, or it is about something that the tool itself has started.
inline std::string_view shells_words_on(std::string_view tool, std::string_view line) {
    constexpr std::string_view kWords[] = {"not found", "command not found", "Permission denied",
                                           "No such file or directory"};
    const auto colon = line.rfind(": ");
    if (colon == std::string_view::npos) return {};
    const auto about = line.substr(0, colon);
    const bool is_meant = about.ends_with(tool) &&
                          (about.size() == tool.size() ||
                           std::string_view("/ ").find(about[about.size() - tool.size() - 1]) !=
                               std::string_view::npos);
    for (const auto words : kWords) {
        if (is_meant && line.substr(colon + 2) == words) return words;
    }
    return {};
}

// Whether the line is no word of the tool, but of the shell or the loader that could not start it:
//     sh: 1: /opt/qv_tools/storcli_x64: not found
//     /opt/qv_tools/storcli_x64: error while loading shared libraries: libx.so.1: cannot open shared object file: ...
//     sh: 1: /opt/qv_tools/storcli_x64: Exec format error
inline bool tells_no_start(std::string_view tool, std::string_view line) {
    if (tool.empty()) return false;
    if (!shells_words_on(tool, line).empty()) return true;
    constexpr std::string_view kWords[] = {
        ": error while loading shared libraries: ", ": Exec format error", ": cannot execute"};
    for (const auto words : kWords) {
        const auto at = line.find(words);
        if (at == std::string_view::npos || !line.substr(0, at).ends_with(tool)) continue;
        if (at == tool.size() ||
            std::string_view("/ ").find(line[at - tool.size() - 1]) != std::string_view::npos)
            return true;
    }
    return false;
}

}  // namespace qvhost
