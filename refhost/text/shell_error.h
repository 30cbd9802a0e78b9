// What a shell says of a tool that it cannot start.
#pragma once

#include <string_view>

namespace qvhost {

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

}  // namespace qvhost
