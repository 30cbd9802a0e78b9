#include "qvhost/finish/judge_report.h"

#include <chrono>
#include <ctime>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "findings/judge.h"
#include "inventory/exit_codes.h"
#include "inventory/survey.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

using inventory::CaptureOrigin;

// The word of a shell command that begins there, its quotes and escapes removed.
std::string shell_word(std::string_view command, std::size_t begin) {
    std::string word;
    bool quoted = false;
    for (std::size_t i = begin; i < command.size(); ++i) {
        const char c = command[i];
        if (c == '\'') {
            quoted = !quoted;
        } else if (!quoted && c == '\\' && i + 1 < command.size()) {
            word += command[++i];
        } else if (!quoted && std::string_view(" \t;&|)").find(c) != std::string_view::npos) {
            break;
        } else {
            word += c;
        }
    }
    return word;
}

// "'/opt/qvhost/bin/qv_tools/TOOL_x64' ..." or "TOOL ...": the name alone.
std::string tool_of(const std::string& command) {
    const auto path = shell_word(command, 0);
    return path.substr(path.find_last_of('/') + 1);
}

// The files in the log directory that the shell writes for the command, behind ">" or "1>".
std::vector<std::string> captures_of(const std::string& command, const std::string& log_dir) {
    std::vector<std::string> captures;
    for (auto at = command.find('>'); at != std::string::npos; at = command.find('>', at + 1)) {
        const auto begin = command.find_first_not_of("> \t", at);
        if (begin == std::string::npos) break;
        const auto path = shell_word(command, begin);
        if (path.starts_with(log_dir)) captures.push_back(path.substr(log_dir.size()));
    }
    return captures;
}

bool is_harmless(const CommandInfo& command) {
    return !command.cut_off && inventory::ran_to_its_end(command.text, command.outcome);
}

// The log directory as it stands in commands.
std::string text_of(const LogDir& dir) {
    auto path = dir.path().string();
    if (!path.ends_with('/')) path += '/';
    return path;
}

std::vector<CaptureOrigin> origins_of(const std::vector<CommandInfo>& commands, const LogDir& dir) {
    std::vector<CaptureOrigin> origins;
    for (const auto& command : commands) {
        for (const auto& capture : captures_of(command.text, text_of(dir)))
            origins.push_back(
                {capture, tool_of(command.text), is_harmless(command) ? "" : command.outcome});
    }
    return origins;
}

// The captures of the host's own questions, and no others, have this name.
bool is_own_question(const CommandInfo& command, const LogDir& dir) {
    const auto captures = captures_of(command.text, text_of(dir));
    return !captures.empty() && captures.front().starts_with("host_");
}

// "sensorinfo.txt: ipmitool: killed by signal 9"
std::string cut_off_words(const CommandInfo& command, const LogDir& dir) {
    const auto captures = captures_of(command.text, text_of(dir));
    return (captures.empty() ? "" : captures.front() + ": ") + tool_of(command.text) + ": " +
           command.outcome;
}

// "2026-11-21T01:20:40Z" as this system's clock shows it: captures have local times.
std::string local_time(const std::string& utc) {
    std::tm parts{};
    if (!::strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts)) return "";
    const auto seconds = ::timegm(&parts);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return text;
}

// "storage\tsmartctl is not installed\n", one a line.
std::vector<findings::Lack> lacks_in(const std::string& text) {
    std::vector<findings::Lack> lacks;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const auto tab = line.find('\t');
        if (tab != std::string::npos) lacks.push_back({line.substr(0, tab), line.substr(tab + 1)});
    }
    return lacks;
}

// Files that are older are an earlier collection's. One second earlier, since file systems keep times more
// coarsely than clocks.
std::filesystem::file_time_type start_of(const Store& store) {
    std::tm parts{};
    if (!::strptime(store.meta("started").c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts))
        return std::filesystem::file_time_type::min();
    const auto start = std::chrono::system_clock::from_time_t(::timegm(&parts));
    return std::chrono::file_clock::from_sys(start) - std::chrono::seconds(1);
}

findings::Circumstances circumstances_of(const Store& store,
                                         const std::vector<CommandInfo>& commands,
                                         const LogDir& dir) {
    findings::Circumstances circumstances;
    // A server that was recorded long ago is judged as of then, today and next year.
    circumstances.now = store.meta("recorded");
    if (circumstances.now.empty()) circumstances.now = local_time(store.meta("finished"));
    if (store.meta("status") != "complete") {
        circumstances.incomplete_because = store.meta("incomplete_because");
        if (circumstances.incomplete_because.empty())
            circumstances.incomplete_because = "it did not come to its end";
    }
    circumstances.lacks = lacks_in(store.meta("lacks"));
    for (const auto& command : commands) {
        // A question of the host's own is a further one: without its answer the collection is what it was.
        if (command.cut_off && !is_own_question(command, dir))
            circumstances.cut_off_commands.push_back(cut_off_words(command, dir));
    }
    return circumstances;
}

}  // namespace

inventory::Inventory judge_report(Store& store, const LogDir& dir,
                                  const std::vector<CommandInfo>& commands) {
    EventWriter events(store);
    findings::EventJudge judge_events;
    auto survey = inventory::survey(
        dir.path(), origins_of(commands, dir),
        [&](inventory::Event&& event) {
            judge_events.take(event);
            events.add(event);
        },
        start_of(store));
    write_inventory(store, survey.inventory);
    write_verdict(store,
                  findings::judge(survey, judge_events, circumstances_of(store, commands, dir)));
    store.commit();
    return std::move(survey.inventory);
}

findings::Verdict judge_again(const Store& store, const LogDir& dir, const findings::Rules& rules) {
    const auto commands = store.commands();
    findings::EventJudge events;
    const auto survey = inventory::survey(
        dir.path(), origins_of(commands, dir),
        [&](inventory::Event&& event) { events.take(event); }, start_of(store));
    return findings::judge(survey, events, circumstances_of(store, commands, dir), rules);
}

}  // namespace qvhost
