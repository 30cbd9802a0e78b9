#include "bundle/summary_text.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "compare/entities.h"
#include "show/show_verdict.h"
#include "show/text_table.h"
#include "show/visible.h"
#include "text/size.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost::bundle {

namespace {

// What vendors ask for, by the names of the inventory.
constexpr const char* kNumbers[] = {"model", "product", "part", "serial", "firmware"};

void put_title(std::ostream& out, const char* title) { out << '\n' << title << '\n'; }

void put_machine(std::ostream& out, const Store& store, const std::string& redacted) {
    std::vector<std::pair<std::string, std::string>> lines;
    const auto add = [&](const std::string& label, const std::string& text) {
        if (!text.empty()) lines.emplace_back(one_line(label), one_line(text));
    };
    add("Host", store.meta("host"));
    for (const auto& fact : store.facts()) add(fact.label, fact.value);
    add("System", store.meta("os"));
    const auto finished = store.meta("finished");
    add("Collected", (finished.empty() ? "" : finished + ", ") + store.status_text());
    if (!redacted.empty())
        add("Replaced", redacted + ": other values of the same form stand there");
    print_labelled(out, lines, TerminalStyle());
}

// "Drive 252:1 of controller 0: model X, serial ZA1, firmware 0004"
std::string numbers_of(const compare::KindRow& kind, const compare::Table& table,
                       const compare::Row& row) {
    std::string numbers;
    for (const auto* name : kNumbers) {
        const auto column = table.column(name);
        if (column == table.columns.size() || !compare::is_known(row.values[column])) continue;
        numbers +=
            (numbers.empty() ? "" : ", ") + (name + (" " + compare::text_of(row.values[column])));
    }
    if (numbers.empty()) return "";
    return compare::subject_of(kind, table, row, compare::Identities::left_out) + ": " + numbers;
}

void put_numbers(std::ostream& out, const Store& store, const findings::Verdict& verdict) {
    const auto tables = compare::tables_of(read_inventory(store), verdict);
    bool has_title = false;
    for (const auto& table : tables) {
        const auto kinds = compare::kinds();
        const auto kind = std::find_if(kinds.begin(), kinds.end(),
                                       [&](const auto& one) { return one.kind == table.kind; });
        if (kind == kinds.end()) continue;
        for (const auto& row : table.rows) {
            const auto line = numbers_of(*kind, table, row);
            if (line.empty()) continue;
            if (!std::exchange(has_title, true))
                put_title(out, "Models, parts, serial numbers, firmware");
            out << "  " << one_line(line) << '\n';
        }
    }
}

void put_missing(std::ostream& out, const Store& store, const std::vector<LeftOut>& left_out) {
    std::vector<std::string> lines;
    for (const auto& command : store.commands()) {
        if (const auto said = outcome(command); !said.empty())
            lines.push_back(command.text + ": " + said);
    }
    for (const auto& [name, reason, bytes] : left_out)
        lines.push_back(name + ", " + size_text(bytes) + ": not in this bundle: " + reason);
    if (lines.empty()) return;
    put_title(out, "What is missing");
    for (const auto& line : lines) out << "  " << one_line(line) << '\n';
}

}  // namespace

std::string summary_text(const Store& store, const Manifest& manifest) {
    std::ostringstream out;
    const auto verdict = read_verdict(store);
    put_machine(out, store, manifest.redacted);
    out << '\n';
    show_verdict(out, verdict, TerminalStyle());
    put_numbers(out, store, verdict);
    put_missing(out, store, manifest.left_out);
    return out.str();
}

}  // namespace qvhost::bundle
