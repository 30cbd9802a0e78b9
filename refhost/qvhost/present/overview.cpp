#include "qvhost/present/overview.h"

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "inventory/fields.h"
#include "show/show_verdict.h"
#include "show/text_table.h"
#include "show/visible.h"
#include "store/typed_table.h"
#include "verdict/verdict_tables.h"

namespace qvhost {

namespace {

using Rows = std::vector<std::vector<std::string>>;

// What is known of the machine and of the collection.
void show_machine(std::ostream& out, const Store& store, const TerminalStyle& style) {
    std::vector<std::pair<std::string, std::string>> lines;
    const auto add = [&](const char* label, const std::string& text) {
        if (!text.empty()) lines.emplace_back(label, one_line(text));
    };
    add("Host", store.meta("host"));
    for (const auto& fact : store.facts()) add(fact.label.c_str(), fact.value);
    add("System", store.meta("os"));
    const auto finished = store.meta("finished");
    add("Collected", (finished.empty() ? "" : finished + ", ") + store.status_text());
    for (auto& [label, text] : lines) label = one_line(label);
    print_labelled(out, lines, style);
}

// A row each for the tables that have rows; the number of the others is returned.
std::size_t add_tables(const Store& store, Rows& rows) {
    std::size_t empty = 0;
    const auto add = [&](const std::string& id, std::int64_t count, const std::string& title) {
        if (count > 0) {
            rows.push_back({one_line(id), std::to_string(count), one_line(title)});
        } else {
            ++empty;
        }
    };
    inventory::each_kind([&](const auto& kind) {
        if (!stored_columns(store, kind.name).empty())
            add(kind.name, count_stored_rows(store, kind.name), kind.meaning);
    });
    if (!stored_columns(store, "events").empty())
        add("events", count_stored_rows(store, "events"), "What the logs say, of all sources.");
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) {
            auto title = table.title.empty() ? module.display : table.title;
            if (!table.reason.empty()) title += " (partial: " + table.reason + ")";
            add(table.id, table.records, title);
        }
    }
    return empty;
}

}  // namespace

void show_overview(std::ostream& out, const Store& store, const TerminalStyle& style) {
    show_machine(out, store, style);
    out << '\n';
    if (const auto verdict = read_verdict(store); !verdict.health.empty()) {
        show_verdict(out, verdict, style);
        out << '\n';
    }
    Rows rows;
    const auto empty = add_tables(store, rows);
    if (!rows.empty()) print_table(out, {"Table", "Rows", "What is in it"}, rows, style);
    if (empty > 0)
        out << '\n'
            << (empty == 1 ? "1 table is empty" : std::to_string(empty) + " tables are empty")
            << "; --all says why.\n";
}

}  // namespace qvhost
