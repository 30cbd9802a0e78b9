#include "runner/group.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>

namespace runner {

namespace {

namespace fs = std::filesystem;

struct Process {
    pid_t parent = 0;
    pid_t group = 0;
    bool has_ended = false;  // and is not waited for yet
};

// proc(5), stat: "PID (NAME) STATE PPID PGRP ..."; the name may hold anything.
std::optional<Process> read_process(const fs::path& directory) {
    std::ifstream file(directory / "stat");
    std::string text;
    std::getline(file, text, '\0');
    const auto name_end = text.rfind(')');
    char state = 0;
    Process process;
    if (name_end == std::string::npos || std::sscanf(text.c_str() + name_end + 1, " %c %d %d",
                                                     &state, &process.parent, &process.group) != 3)
        return std::nullopt;
    process.has_ended = state == 'Z' || state == 'X';
    return process;
}

std::map<pid_t, Process> all_processes() {
    std::map<pid_t, Process> found;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        pid_t pid = 0;
        const auto [rest, unread] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (unread != std::errc() || *rest != '\0') continue;
        if (const auto process = read_process(entry->path())) found[pid] = *process;
    }
    return found;
}

// What descends from this process, but for some and what descends from them.
std::set<pid_t> descendants(const std::map<pid_t, Process>& processes,
                            const std::set<pid_t>& without) {
    std::multimap<pid_t, pid_t> children;
    for (const auto& [pid, process] : processes) children.emplace(process.parent, pid);
    std::set<pid_t> found;
    for (std::vector<pid_t> parents{::getpid()}; !parents.empty();) {
        const auto [begin, end] = children.equal_range(parents.back());
        parents.pop_back();
        for (auto child = begin; child != end; ++child) {
            if (without.contains(child->second) || !found.insert(child->second).second) continue;
            parents.push_back(child->second);
        }
    }
    return found;
}

bool host_adopts_and_ends() {
    const char* const value = std::getenv("QV_END_PROCESSES");
    int adopts = 0;
    return value && std::string_view(value) == "1" &&
           ::prctl(PR_GET_CHILD_SUBREAPER, &adopts) == 0 && adopts != 0;
}

// Asked before /proc is read, which takes its time on a large server.
bool has_children() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

}  // namespace

CommandProcesses::CommandProcesses() : whole_tree_(host_adopts_and_ends()) {
    if (whole_tree_ && has_children()) before_ = descendants(all_processes(), {});
}

bool CommandProcesses::end_with_command() const { return whole_tree_ && has_children(); }

std::vector<pid_t> CommandProcesses::members() const {
    const auto processes = all_processes();
    std::set<pid_t> candidates;
    if (whole_tree_) {
        candidates = descendants(processes, before_);
    } else {
        for (const auto& [pid, process] : processes) {
            if (process.group == group_) candidates.insert(pid);
        }
    }
    std::vector<pid_t> found;
    for (const pid_t pid : candidates) {
        if (!processes.at(pid).has_ended) found.push_back(pid);
    }
    return found;
}

void CommandProcesses::kill() const {
    if (!whole_tree_) {
        ::kill(-group_, SIGKILL);
        return;
    }
    const auto processes = all_processes();
    const auto members = descendants(processes, before_);
    // Whole groups at once, where the leader shows that they are the command's: what starts processes faster than
    // they are found here must not get away.
    for (const auto& [pid, process] : processes) {
        const bool is_ours = process.group == group_ || members.contains(process.group);
        if (is_ours && process.group == pid) ::kill(-pid, SIGKILL);
    }
    for (const pid_t pid : members) ::kill(pid, SIGKILL);
}

void CommandProcesses::reap_adopted() const {
    if (!whole_tree_) return;
    const auto processes = all_processes();
    for (const pid_t pid : descendants(processes, before_)) {
        const auto& process = processes.at(pid);
        if (process.has_ended && process.parent == ::getpid() && pid != group_)
            ::waitpid(pid, nullptr, WNOHANG);
    }
}

bool starts_service(const std::string& command) {
    return command.starts_with("service ") || command.starts_with("systemctl ");
}

}  // namespace runner
