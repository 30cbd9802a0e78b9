#include "qvhost/finish/completeness.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <utility>
#include <vector>

namespace qvhost {

namespace {

constexpr std::size_t kMostNamed = 3;  // commands in the text

// "ipmitool sensor was stopped at its time limit", "9 commands were not run: ..."
std::vector<std::string> stops(const CommandLog& log) {
    std::vector<std::pair<std::string, std::size_t>> stopped;  // and how often
    std::vector<const CommandInfo*> not_started;
    for (const auto& command : log.commands) {
        // A question of the host's own is a further one: without it the collection is what it was.
        if (command.origin == "host") continue;
        if (!command.started) not_started.push_back(&command);
        if (!command.started || command.stopped_by.empty()) continue;
        const auto text = short_text(command) + " was " + outcome(command);
        const auto known = std::find_if(stopped.begin(), stopped.end(),
                                        [&](const auto& one) { return one.first == text; });
        if (known == stopped.end()) {
            stopped.emplace_back(text, 1);
        } else {
            ++known->second;
        }
    }
    std::vector<std::string> texts;
    for (const auto& [text, times] : stopped) {
        if (texts.size() == kMostNamed) {
            texts.push_back("so were " + std::to_string(stopped.size() - kMostNamed) + " others");
            break;
        }
        texts.push_back(times == 1 ? text : text + ", " + std::to_string(times) + " times");
    }
    if (!not_started.empty())
        texts.push_back(
            std::to_string(not_started.size()) +
            (not_started.size() == 1 ? " command was not run (" : " commands were not run (") +
            outcome(*not_started.front()) + ")");
    return texts;
}

}  // namespace

std::string why_incomplete(const Store& store, const CommandLog& log, const Reasons& reasons,
                           bool has_no_bmc) {
    auto texts = stops(log);
    for (const auto& module : store.modules()) {
        const auto why = reasons.why_failed(module, has_no_bmc);
        if (!why.empty() && texts.empty())
            texts.push_back("every tool of " + module.display + " failed: " + why);
    }
    return boost::join(texts, "; ");
}

}  // namespace qvhost
