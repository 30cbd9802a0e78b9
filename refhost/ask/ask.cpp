#include "ask/ask.h"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <set>
#include <utility>

#include "ask/conditions.h"
#include "ask/facts.h"
#include "ask/questions.h"
#include "files/script.h"
#include "inventory/text.h"

namespace qvhost::ask {

namespace fs = std::filesystem;

namespace {

constexpr int kPlugInsControllers = 9;  // a plug-in asks about the controllers 0 to 8

// The captures of a plug-in that say what there is to ask about.
std::set<std::string> plug_ins_lists() {
    std::set<std::string> captures{"ctrlcount.txt"};
    for (const auto& question : questions()) {
        if (!question.tells_more || question.told_by.empty()) continue;
        for (int n = 0; n < kPlugInsControllers; ++n)
            captures.insert(inventory::filled_in(question.told_by, std::to_string(n)));
    }
    return captures;
}

// "ipmitool sensor >'/log/sensorinfo.txt'": what is asked, without where the answer goes.
std::string asks(const std::string& command) {
    auto text = command.substr(0, command.find_first_of(">|"));
    if (text.ends_with(" 1") || text.ends_with(" 2")) text.pop_back();  // of "1>", "2>"
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// Whether a command of the log runs the tool.
bool runs(const std::string& command, std::string_view tool) {
    const auto word = command.substr(0, command.find_first_of(" \t>"));
    const auto name = word.substr(word.rfind('/') + 1);
    return name.starts_with(tool);
}

class Asking {
public:
    explicit Asking(const Settings& settings)
        : settings_(settings), facts_(settings.log_dir, settings.foreign) {
        for (const auto& capture : plug_ins_lists()) facts_.read(capture);
    }

    void ask_all() {
        for (const auto& question : questions()) {
            if (settings_.for_verdicts_alone && question.needed == Needed::for_details) continue;
            ask(question);
        }
    }

private:
    void ask(const Question& question) {
        const auto call = called_for(question.when, facts_,
                                     settings_.recorded ? fs::path() : settings_.machine_root);
        if (call.called == Called::no) return;
        if (!call.problem.empty()) return lack(question, call.problem);
        for (const auto& n : call.each) {
            if (!is_told(question, n) && !facts_.has(inventory::filled_in(question.capture, n)))
                ask(question, n, call.called);
        }
    }

    // Whether a plug-in has asked for the same. What failed is not asked again in the same words.
    bool is_told(const Question& question, const std::string& n) const {
        if (question.told_by.empty()) return false;
        const auto capture = inventory::filled_in(question.told_by, n);
        const auto path = (settings_.log_dir / capture).string();
        const auto& earlier = settings_.earlier;
        const auto writer = std::find_if(earlier.rbegin(), earlier.rend(), [&](const Earlier& one) {
            return one.command.find(path) != std::string::npos;
        });
        if (writer == earlier.rend()) return facts_.has(capture);
        const auto arguments = inventory::filled_in(question.arguments, n);
        const auto same = std::string(question.tool) + (arguments.empty() ? "" : " ") + arguments;
        return (writer->ended_well && facts_.has(capture)) || asks(writer->command) == same;
    }

    void ask(const Question& question, const std::string& n, Called called) {
        const auto arguments = inventory::filled_in(question.arguments, n);
        const auto& search = tools(question.tool);
        const auto& found = search.found;
        if (found.empty()) {
            if (called != Called::yes || settings_.recorded) return;
            return lack(question,
                        search.problem.empty() ? not_installed(question.tool) : search.problem);
        }
        if (was_stopped(question.tool)) {
            if (!settings_.recorded)
                lack(question,
                     std::string(question.tool) + " did not end in time and was not asked again");
            return;
        }
        auto& build = build_[std::string(question.tool)];
        if (question.when != When::megaraid) return run(question, found[build], arguments, n);
        // Of the renamed builds the first one that knows a controller is asked from here on.
        for (build = 0; build < found.size(); ++build) {
            run(question, found[build], arguments, n);
            if (!called_for(When::controller, facts_, settings_.machine_root).each.empty()) return;
        }
        build = 0;
    }

    void run(const Question& question, const FoundTool& tool, const std::string& arguments,
             const std::string& n) {
        if (!is_recorded(tool.name, arguments)) return;
        const auto capture = inventory::filled_in(question.capture, n);
        settings_.begin(tool.name);
        facts_.note_written(capture);
        const int status =
            settings_.run(tool.command + (arguments.empty() ? "" : " " + arguments) + " >" +
                          shell_quoted((settings_.log_dir / capture).string()));
        if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            stopped_.insert(std::string(question.tool));
        if (question.tells_more) facts_.read(capture);
    }

    bool is_recorded(const std::string& tool, const std::string& arguments) const {
        const auto& recorded = settings_.recorded;
        return !recorded ||
               std::any_of(recorded->begin(), recorded->end(), [&](const Recorded& one) {
                   return one.tool == tool && (!one.arguments || *one.arguments == arguments);
               });
    }

    // A tool that hangs would hang once more.
    bool was_stopped(std::string_view tool) const {
        return stopped_.contains(std::string(tool)) ||
               std::any_of(
                   settings_.earlier.begin(), settings_.earlier.end(),
                   [&](const Earlier& one) { return one.stopped && runs(one.command, tool); });
    }

    const Search& tools(std::string_view tool) {
        const std::string name(tool);
        const auto known = tools_.find(name);
        if (known != tools_.end()) return known->second;
        return tools_.emplace(name, find_tool(tool, settings_.places)).first->second;
    }

    void lack(const Question& question, const std::string& words) {
        if (question.subsystem.empty()) return;
        const Lack lack{std::string(question.subsystem), words};
        if (lacks_.insert(lack.subsystem + " " + lack.words).second) settings_.lacks(lack);
    }

    const Settings& settings_;
    Facts facts_;
    std::map<std::string, Search> tools_;
    std::map<std::string, std::size_t> build_;  // which one of those that were found
    std::set<std::string> stopped_;
    std::set<std::string> lacks_;
};

}  // namespace

void ask(const Settings& settings) { Asking(settings).ask_all(); }

}  // namespace qvhost::ask
