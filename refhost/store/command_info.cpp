#include "store/command_info.h"

#include <string_view>

namespace qvhost {

namespace {

// Calls `is_so` with what stands before each place where the file is a word of its own, or a quoted one.
template <class Test>
bool any_place(const std::string& command, const std::string& file, Test is_so) {
    for (auto at = command.find(file); at != std::string::npos; at = command.find(file, at + 1)) {
        const auto end = at + file.size();
        const bool whole =
            end == command.size() ||
            std::string_view("' \t;&|)").find(command[end]) != std::string_view::npos;
        if (whole && is_so(std::string_view(command).substr(0, at))) return true;
    }
    return false;
}

}  // namespace

bool names(const CommandInfo& command, const std::string& file) {
    return any_place(command.text, file, [](std::string_view) { return true; });
}

bool writes(const CommandInfo& command, const std::string& file) {
    return any_place(command.text, file, [](std::string_view before) {
        const auto last = before.find_last_not_of("' \t");
        return last != std::string_view::npos && before[last] == '>';
    });
}

}  // namespace qvhost
