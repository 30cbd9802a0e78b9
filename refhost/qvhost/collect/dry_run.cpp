#include "qvhost/collect/dry_run.h"

#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <iostream>

#include "ask/questions.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/base/environment.h"
#include "qvhost/base/limits.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/collect/lanes.h"
#include "qvhost/collect/offer.h"
#include "qvhost/collect/selection.h"
#include "show/terminal.h"
#include "show/text_table.h"
#include "show/visible.h"
#include "text/size.h"

namespace qvhost {

namespace {

// With an empty line behind it; nothing if there are none.
void print_pairs(const std::vector<std::string>& headers,
                 const std::vector<std::pair<std::string, std::string>>& pairs,
                 const TerminalStyle& style) {
    if (pairs.empty()) return;
    std::vector<std::vector<std::string>> rows;
    for (const auto& [first, second] : pairs) rows.push_back({first, second});
    print_table(std::cout, headers, rows, style);
    std::cout << '\n';
}

// The commands, and what calls for each.
std::vector<std::pair<std::string, std::string>> questions_of(const CollectOptions& options) {
    std::vector<std::pair<std::string, std::string>> rows;
    if (!asks_own_questions(options)) return rows;
    for (const auto& question : ask::questions()) {
        if (options.profile == kHealthProfile && question.needed != ask::Needed::by_verdicts)
            continue;
        rows.emplace_back(std::string(question.tool) + (question.arguments.empty() ? "" : " ") +
                              std::string(question.arguments),
                          ask::words(question.when));
    }
    return rows;
}

// The number of the lane that asks the module.
std::size_t lane_with(const std::vector<Lane>& lanes, const std::string& module) {
    std::size_t number = 1;
    for (const auto& lane : lanes) {
        if (std::any_of(lane.begin(), lane.end(),
                        [&](const LaneModule& one) { return one.name == module; }))
            break;
        ++number;
    }
    return number;
}

}  // namespace

void print_plan(CollectOptions options, const Stage& stage) {
    const auto limits = limits_for(options);
    const auto file = options.plugin.empty() ? installed_plugin() : options.plugin;
    const auto offer = offer_of(file, limits.module_seconds);
    const auto declared = tables_declared_by(file);
    expect_known_tools(options, declared);
    settle_names(options, offer, declared.tables);
    std::vector<std::vector<std::string>> rows;
    if (options.profile != kHealthProfile) {
        const auto lanes = lanes_of(offer, options, declared.tables);
        for (const auto& [place, tables] : select_modules(offer, options))
            rows.push_back({offer[place].display,
                            std::to_string(lane_with(lanes, offer[place].name)),
                            boost::join(tables, " ")});
    }
    const auto at_most = [](unsigned seconds) {
        return "at most " + std::to_string(seconds) + " s";
    };
    const auto at_most_size = [](std::uint64_t bytes) {
        return "at most " + exact_size_text(bytes);
    };
    // clang-format off
    const std::vector<std::vector<std::string>> facts{
        {"Log directory",                     checked_log_dir(options.log_dir).string()},
        {"Vendors' tools",                    stage.vendor_tools().string()},
        {"Run",                               at_most(limits.run_seconds)},
        {"Module",                            at_most(limits.module_seconds)},
        {"Tool",                              at_most(limits.tool_seconds)},
        {"Tool that packs the system's logs", at_most(limits.archive_seconds)},
        {"Silence of a tool",                 at_most(limits.silence_seconds)},
        {"All files",                         at_most_size(limits.run_bytes)},
        {"A capture",                         at_most_size(limits.capture_bytes)},
        {"An archive of the system's logs",   at_most_size(limits.archive_bytes)},
        {"The records of a table",            at_most_size(limits.table_bytes)},
        {"Left free on the disk",             free_text(options)},
        {"Processes of a tool",               "at most " + std::to_string(limits.processes)},
    };
    // clang-format on
    const auto style = terminal_style(STDOUT_FILENO);
    print_table(std::cout, {"What", "Plan"}, facts, style);
    std::cout << '\n';
    if (!rows.empty()) {
        print_table(std::cout, {"Module", "Lane", "Tables"}, rows, style);
        std::cout << '\n';
    }
    print_pairs({"Question of the program's own", "Asked where"}, questions_of(options), style);
    print_pairs({"Stand-in for", "What it does"}, stage.stand_ins, style);
    print_pairs({"Looked for", "Answers"}, stage.vendor_files, style);
    std::cout << "Nothing was run and nothing was written.\n";
}

}  // namespace qvhost
