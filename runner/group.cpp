#include "runner/group.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace runner {

namespace {

namespace fs = std::filesystem;

// proc(5), stat: "PID (NAME) STATE PPID PGRP ..."; the name may hold anything.
bool is_member(const fs::path& process, pid_t group) {
    std::ifstream file(process / "stat");
    std::string text;
    std::getline(file, text, '\0');
    const auto name_end = text.rfind(')');
    char state = 0;
    int found = 0;
    return name_end != std::string::npos &&
           std::sscanf(text.c_str() + name_end + 1, " %c %*d %d", &state, &found) == 2 &&
           found == group && state != 'Z' && state != 'X';
}

}  // namespace

std::vector<pid_t> members(pid_t group) {
    std::vector<pid_t> found;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        pid_t pid = 0;
        const auto [rest, unread] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (unread != std::errc() || *rest != '\0') continue;
        if (is_member(entry->path(), group)) found.push_back(pid);
    }
    return found;
}

}  // namespace runner
