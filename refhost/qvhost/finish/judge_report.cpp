#include "qvhost/finish/judge_report.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "findings/rules_file.h"
#include "inventory/exit_codes.h"
#include "inventory/survey.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/site_rules.h"
#include "qvhost/finish/commands.h"
#include "qvhost/finish/history.h"
#include "qvhost/finish/runs.h"
#include "text/utc.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

using inventory::CaptureOrigin;

bool is_harmless(const CommandInfo& command) {
    return !was_cut_off(command) && inventory::ran_to_its_end(command.text, outcome(command));
}

// The directory as the commands name it: the log directory may have been moved since.
std::filesystem::path named_in_commands(const Store& store, const LogDir& dir) {
    const auto then = store.meta("log_dir");
    return then.empty() ? dir.path() : std::filesystem::path(then);
}

std::vector<CaptureOrigin> origins_of(const std::vector<CommandInfo>& commands,
                                      const std::filesystem::path& log_dir) {
    std::vector<CaptureOrigin> origins;
    for (const auto& command : commands) {
        auto captures = captures_of(command.text, log_dir);  // those that it did not make as well
        captures.insert(captures.end(), command.captures.begin(), command.captures.end());
        const auto ended_badly = is_harmless(command) ? "" : outcome(command);
        for (auto& capture : captures)
            origins.push_back({std::move(capture), command.tool, ended_badly});
    }
    return origins;
}

// "sensorinfo.txt: ipmitool: killed by signal 9"
std::string cut_off_words(const CommandInfo& command, const std::filesystem::path& log_dir) {
    const auto captures = captures_of(command.text, log_dir);
    return (captures.empty() ? "" : captures.front() + ": ") + command.tool + ": " +
           outcome(command);
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

bool was_stopped_for_time(const CommandInfo& command) {
    return command.stopped_by == "time" || command.stopped_by == "silence";
}

bool asks_bmc(const CommandInfo& command) { return is_bmc_tool(command.tool); }

// Whether the BMC was asked who it is, which it answers without looking anything up, and has answered.
bool asks_identity(const CommandInfo& command) {
    constexpr std::string_view kIdentity[] = {"mcinfo.txt", "host_mc_info.txt"};
    return asks_bmc(command) && command.exit == 0 && command.seconds &&
           command.captures.size() == 1 &&
           std::find(std::begin(kIdentity), std::end(kIdentity), command.captures.front()) !=
               std::end(kIdentity);
}

findings::Circumstances circumstances_of(const Store& store,
                                         const std::vector<CommandInfo>& commands,
                                         const LogDir& dir) {
    findings::Circumstances circumstances;
    // A server that was recorded long ago is judged as of then, today and next year.
    circumstances.now = store.meta("recorded");
    if (circumstances.now.empty()) circumstances.now = local_time_of_utc(store.meta("finished"));
    if (store.meta("status") != "complete") {
        circumstances.incomplete_because = store.meta("incomplete_because");
        if (circumstances.incomplete_because.empty())
            circumstances.incomplete_because = "it did not come to its end";
    }
    circumstances.lacks = lacks_in(store.meta("recorded_lacks") + store.meta("lacks"));
    for (const auto& command : commands) {
        if (asks_identity(command))
            circumstances.bmc_answers.push_back({
                *command.seconds, {command.captures.front(), 0}
            });
        if (was_stopped_for_time(command) && asks_bmc(command))
            circumstances.unanswered_by_bmc.push_back(
                cut_off_words(command, named_in_commands(store, dir)));
        if (was_cut_off(command))
            circumstances.cut_off_commands.push_back(
                cut_off_words(command, named_in_commands(store, dir)));
    }
    return circumstances;
}

// The verdict, with what earlier runs add to it.
findings::Verdict judged(const Store& store, const LogDir& dir, const inventory::Survey& survey,
                         findings::EventJudge& events, const std::vector<CommandInfo>& commands,
                         const findings::Rules& rules) {
    auto circumstances = circumstances_of(store, commands, dir);
    circumstances.past = past_of(store, dir, survey.inventory);
    auto verdict = findings::judge(survey, events, circumstances, rules);
    add_first_seen(store, dir, survey.inventory, verdict);
    verdict.started = store.meta("started");
    return verdict;
}

}  // namespace

inventory::Survey read_report(Store& store, const LogDir& dir,
                              const std::vector<CommandInfo>& commands,
                              findings::EventJudge& events) {
    EventWriter writer(store);
    auto survey = inventory::survey(
        dir.path(), origins_of(commands, named_in_commands(store, dir)),
        [&](inventory::Event&& event) {
            events.take(event);
            writer.add(event);
        },
        foreign_files(store, dir));
    write_inventory(store, survey.inventory);
    return survey;
}

void judge_report(Store& store, const LogDir& dir, const std::vector<CommandInfo>& commands,
                  const inventory::Survey& survey, findings::EventJudge& events) {
    write_verdict(store, judged(store, dir, survey, events, commands, rules_of(store)));
    store.commit();
}

findings::Verdict judge_again(const Store& store, const LogDir& dir, const findings::Rules& rules) {
    const auto commands = store.commands();
    findings::EventJudge events;
    const auto survey = inventory::survey(
        dir.path(), origins_of(commands, named_in_commands(store, dir)),
        [&](inventory::Event&& event) { events.take(event); }, foreign_files(store, dir));
    return judged(store, dir, survey, events, commands, rules);
}

}  // namespace qvhost
