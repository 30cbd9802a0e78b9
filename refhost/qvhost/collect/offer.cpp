#include "qvhost/collect/offer.h"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string_view>

#include "processes/processes.h"

namespace qvhost {

namespace {

// The answer of the process: texts, each behind a letter that says what it is and before a NUL. The last one
// says that it is whole.
constexpr char kModule = 'm';
constexpr char kDisplay = 'd';
constexpr char kTable = 't';
constexpr char kProblem = 'p';
constexpr char kEnd = '.';

void add(std::string& answer, char kind, const std::string& text) {
    answer += kind;
    answer += text.substr(0, text.find('\0'));
    answer += '\0';
}

std::string answer_of(const std::filesystem::path& plugin) {
    std::string answer;
    try {
        for (const auto& module : offer_of(Plugin(plugin))) {
            add(answer, kModule, module.name);
            add(answer, kDisplay, module.display);
            for (const auto& table : module.tables) add(answer, kTable, table);
        }
    } catch (const std::exception& error) {
        add(answer, kProblem, error.what());
    }
    add(answer, kEnd, "");
    return answer;
}

}  // namespace

Offer offer_of(const Plugin& plugin) {
    Offer offer;
    for (const auto& module : plugin.modules()) {
        module->InitCallbacks();
        offer.push_back({module->GetName(), module->GetDisplay(), {}});
        for (const auto& [table, callbacks] : module->callbacks)
            offer.back().tables.push_back(table);
    }
    return offer;
}

Offer offer_of(const std::filesystem::path& plugin, unsigned seconds) {
    const auto [answer, status] = answer_of_process([&] { return answer_of(plugin); }, seconds);
    Offer offer;
    for (std::string_view rest = answer; !rest.empty();) {
        const auto text = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(rest.size(), text.size() + 1));
        const std::string value(text.substr(std::min<std::size_t>(text.size(), 1)));
        switch (text.empty() ? kEnd : text.front()) {
            case kModule: offer.push_back({value, "", {}}); break;
            case kDisplay: offer.back().display = value; break;
            case kTable: offer.back().tables.push_back(value); break;
            case kProblem: throw std::runtime_error(value);
            default: return offer;
        }
    }
    throw std::runtime_error(plugin.string() + ": the plug-in did not say what it can collect: " +
                             (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM
                                  ? "it took longer than " + std::to_string(seconds) + " s"
                              : WIFSIGNALED(status)
                                  ? std::string(::strsignal(WTERMSIG(status)))
                                  : "it ended with code " + std::to_string(WEXITSTATUS(status))));
}

}  // namespace qvhost
