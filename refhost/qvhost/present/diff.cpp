#include "qvhost/present/diff.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <stdexcept>
#include <utility>

#include "compare/compare.h"
#include "qvhost/finish/history.h"
#include "qvhost/finish/runs.h"
#include "qvhost/present/diff_view.h"
#include "qvhost/present/open_report.h"
#include "verdict/inventory_tables.h"

namespace qvhost {

namespace {

DiffView::Report report_of(const std::filesystem::path& path, const Store& store) {
    auto side = side_of(store);
    if (side.verdict.health.empty())
        throw std::runtime_error(path.string() +
                                 ": the report holds no verdict; it is an older version's");
    return {path.string(), store, std::move(side)};
}

// Equal words at different times are one line for people.
void add(const inventory::Event& event, EventTally& tally) {
    const auto severity = static_cast<std::size_t>(event.severity);
    ++tally.counts[severity];
    auto& first = tally.first[severity];
    const auto same = std::find_if(first.begin(), first.end(), [&](const FoldedEvent& one) {
        return one.event.source == event.source && one.event.subject == event.subject &&
               one.event.text == event.text;
    });
    if (same != first.end()) {
        same->event = event;
        ++same->count;
    } else if (first.size() < kShownEvents) {
        first.push_back({event, 1});
    } else {
        return;
    }
    ++tally.folded[severity];
}

// Tables that either report has, in their order.
std::vector<std::string> tables_of(const Store& from, const Store& to) {
    std::vector<std::string> tables;
    std::set<std::string> known;
    for (const auto* store : {&to, &from}) {
        for (const auto& module : store->modules()) {
            for (const auto& table : module.tables) {
                if (known.insert(table.id).second) tables.push_back(table.id);
            }
        }
    }
    return tables;
}

// The two reports that are meant. One log directory alone means its latest run and the one before.
std::pair<std::filesystem::path, std::filesystem::path> reports_of(const DiffOptions& options) {
    if (!options.to.empty()) return {options.from, options.to};
    const auto earlier = earlier_runs(options.from);
    if (earlier.empty())
        throw std::runtime_error(options.from.string() +
                                 ": there is no earlier run; name two reports");
    return {earlier.front(), options.from};
}

}  // namespace

int diff_reports(const DiffOptions& options) {
    const auto [from_path, to_path] = reports_of(options);
    const auto opened_from = open_report(from_path);
    const auto opened_to = open_report(to_path);
    const auto from = report_of(from_path, opened_from.store);
    const auto to = report_of(to_path, opened_to.store);
    const auto difference = compare::compare(from.side, to.side);
    EventDifference events(from.store, to.store);
    DiffView view{from, to, difference, events, {}, {}, {}};
    events.each_new([&](const inventory::Event& event) { add(event, view.new_events); });
    events.each_gone([&](const inventory::Event& event) { add(event, view.gone_events); });
    if (options.raw) view.raw_tables = tables_of(from.store, to.store);
    if (options.format == "json") {
        print_diff_json(std::cout, view);
    } else if (options.format == "html") {
        print_diff_html(std::cout, view);
    } else {
        print_diff_text(std::cout, view, terminal_style(STDOUT_FILENO));
    }
    return view.is_same() ? 0 : 1;
}

std::vector<std::string> diff_formats() { return {"text", "json", "html"}; }

std::string words_of(const DiffView::Report& report) {
    const auto& systems = report.side.inventory.systems;
    std::string words;
    const auto add = [&](const char* before, const std::string& text) {
        if (!text.empty()) words += (words.empty() ? "" : ", ") + std::string(before) + text;
    };
    add("", report.side.collection.host);
    if (!systems.empty()) {
        add("", systems.front().product.value_or(""));
        add("serial ", systems.front().serial.value_or(""));
    }
    add("", report.side.collection.finished);
    return words.empty() ? report.path : words + " (" + report.path + ")";
}

}  // namespace qvhost
