#include "qvhost/finish/judge_report.h"

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

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

std::vector<CaptureOrigin> origins_of(const std::vector<CommandInfo>& commands, const LogDir& dir) {
    auto log_dir = dir.path().string();
    if (!log_dir.ends_with('/')) log_dir += '/';
    std::vector<CaptureOrigin> origins;
    for (const auto& command : commands) {
        for (const auto& capture : captures_of(command.text, log_dir))
            origins.push_back(
                {capture, tool_of(command.text), is_harmless(command) ? "" : command.outcome});
    }
    return origins;
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

findings::Circumstances circumstances_of(const Store& store,
                                         const std::vector<CommandInfo>& commands) {
    findings::Circumstances circumstances;
    // A server that was recorded long ago is judged as of then, today and next year.
    circumstances.now = store.meta("recorded");
    if (circumstances.now.empty()) circumstances.now = local_time(store.meta("finished"));
    if (store.meta("status") != "complete") {
        circumstances.incomplete_because = store.meta("incomplete_because");
        if (circumstances.incomplete_because.empty())
            circumstances.incomplete_because = "it did not come to its end";
    }
    for (const auto& command : commands) {
        if (command.cut_off)
            circumstances.cut_off_commands.push_back(command.text + ": " + command.outcome);
    }
    return circumstances;
}

}  // namespace

void judge_report(Store& store, const LogDir& dir, const std::vector<CommandInfo>& commands) {
    EventWriter events(store);
    findings::EventJudge judge_events;
    const auto survey =
        inventory::survey(dir.path(), origins_of(commands, dir), [&](inventory::Event&& event) {
            judge_events.take(event);
            events.add(event);
        });
    write_inventory(store, survey.inventory);
    write_verdict(store, findings::judge(survey, judge_events, circumstances_of(store, commands)));
    store.commit();
}

findings::Verdict judge_again(const Store& store, const LogDir& dir, const findings::Rules& rules) {
    const auto commands = store.commands();
    findings::EventJudge events;
    const auto survey = inventory::survey(dir.path(), origins_of(commands, dir),
                                          [&](inventory::Event&& event) { events.take(event); });
    return findings::judge(survey, events, circumstances_of(store, commands), rules);
}

}  // namespace qvhost
