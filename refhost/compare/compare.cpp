#include "compare/compare.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "compare/coverage.h"

namespace qvhost::compare {

namespace {

using findings::Finding;
using findings::Health;
using findings::Verdict;

Value known(const std::string& text) { return text.empty() ? Value() : Value(text); }

// The serial numbers of all kinds that say nothing again.
std::set<Value> serials_in(const std::vector<Table>& tables) {
    std::set<Value> serials;
    for (const auto& kind : kinds()) {
        for (const auto& table : tables) {
            const auto column = table.column("serial");
            if (table.kind != kind.kind || *kind.again || column == table.columns.size()) continue;
            for (const auto& row : table.rows) {
                if (is_known(row.values[column])) serials.insert(row.values[column]);
            }
        }
    }
    return serials;
}

// Leaves out the rows that say again, in each of the reports that has them, what others say.
void leave_out_again(const KindRow& kind, const std::vector<Table>& all_old,
                     const std::vector<Table>& all_new, Table& from, Table& to) {
    if (!*kind.again) return;
    std::set<Value> own;  // things that are told here alone
    const auto note = [&](const Table& table, const std::set<Value>& serials) {
        for (const auto& row : table.rows) {
            if (!serials.contains(row.values[table.column("serial")]))
                own.insert(row.values[table.column(kind.again)]);
        }
    };
    note(from, serials_in(all_old));
    note(to, serials_in(all_new));
    for (auto* table : {&from, &to}) {
        const auto column = table->column(kind.again);
        std::erase_if(table->rows,
                      [&](const Row& row) { return !own.contains(row.values[column]); });
    }
}

// The collection as a table of one row, of the columns that kinds.cpp names.
Table table_of(const Collection& one) {
    Row row;
    row.values = {known(one.host),   known(one.machine_id), known(one.os),
                  known(one.kernel), known(one.run_as),     known(one.version)};
    return {
        "collection",
        {"host",    "machine_id", "os", "kernel", "run_as", "version"},
        {"",     "", "", "", "", ""},
        {row}
    };
}

std::vector<Table> all_tables_of(const Side& side) {
    auto tables = tables_of(side.inventory, side.verdict);
    tables.insert(tables.begin(), table_of(side.collection));
    return tables;
}

inventory::System system_of(const Side& side) {
    return side.inventory.systems.empty() ? inventory::System{} : side.inventory.systems.front();
}

const Health* health_of(const Verdict& verdict, findings::Subsystem subsystem) {
    const auto found = std::find_if(verdict.health.begin(), verdict.health.end(),
                                    [&](const Health& one) { return one.subsystem == subsystem; });
    return found == verdict.health.end() ? nullptr : &*found;
}

// What one report lacks and the other one does not, or lacks as well; what several subsystems lack is told once.
std::vector<Lack> lacks_of(const Verdict& one, const Verdict& other, bool by_both) {
    std::set<std::string> others, told;
    for (const auto& health : other.health)
        others.insert(health.missing.begin(), health.missing.end());
    std::vector<Lack> lacks;
    for (const auto& health : one.health) {
        for (const auto& words : health.missing) {
            if (others.contains(words) == by_both && told.insert(words).second)
                lacks.push_back({health.subsystem, words});
        }
    }
    return lacks;
}

void compare_health(const Verdict& from, const Verdict& to, Difference& difference) {
    for (const auto subsystem : findings::kSubsystems) {
        const auto* before = health_of(from, subsystem);
        const auto* after = health_of(to, subsystem);
        if (before && after && before->health != after->health)
            difference.health.push_back({subsystem, before->health, after->health});
    }
    difference.lacking_now = lacks_of(to, from, false);
    difference.lacking_then = lacks_of(from, to, false);
    difference.lacking_both = lacks_of(to, from, true);
}

void compare_findings(const Verdict& from, const Verdict& to, Difference& difference) {
    std::map<std::string, const Finding*> before;
    for (const auto& finding : from.findings) before.emplace(finding.id, &finding);
    std::set<std::string> after;
    for (const auto& finding : to.findings) {
        if (!after.insert(finding.id).second) continue;
        const auto found = before.find(finding.id);
        if (found == before.end()) {
            difference.new_findings.push_back(finding);
        } else if (found->second->severity != finding.severity) {
            difference.other_severity.push_back({finding, found->second->severity});
        }
    }
    for (const auto& finding : from.findings) {
        const auto found = before.find(finding.id);
        if (found->second == &finding && !after.contains(finding.id))
            difference.gone_findings.push_back(finding);
    }
}

template <class List>
void append(List& list, List&& more) {
    std::move(more.begin(), more.end(), std::back_inserter(list));
}

}  // namespace

bool Difference::is_empty() const {
    return machines != Machines::two && health.empty() && changes.empty() && new_findings.empty() &&
           gone_findings.empty() && other_severity.empty() && not_now.empty() && not_then.empty() &&
           lacking_now.empty() && lacking_then.empty();
}

Machines machines_of(const Side& from, const Side& to) {
    const auto old_system = system_of(from), new_system = system_of(to);
    const std::pair<std::string, std::string> marks[] = {
        {old_system.uuid.value_or(""),   new_system.uuid.value_or("")  },
        {old_system.serial.value_or(""), new_system.serial.value_or("")},
        {from.collection.machine_id,     to.collection.machine_id      },
    };
    auto machines = Machines::unsure;
    for (const auto& [before, after] : marks) {
        if (before.empty() || after.empty()) continue;
        if (before == after) return Machines::same;
        machines = Machines::two;
    }
    if (machines == Machines::unsure && !from.collection.host.empty() &&
        !to.collection.host.empty())
        return from.collection.host == to.collection.host ? Machines::same : Machines::two;
    return machines;
}

Difference compare(const Side& from, const Side& to) {
    Difference difference;
    difference.machines = machines_of(from, to);
    difference.is_backwards = !from.collection.finished.empty() &&
                              !to.collection.finished.empty() &&
                              from.collection.finished > to.collection.finished;
    compare_health(from.verdict, to.verdict, difference);

    const auto old_tables = all_tables_of(from), new_tables = all_tables_of(to);
    const Coverage old_coverage(from.verdict, old_tables), new_coverage(to.verdict, new_tables);
    const auto by_old = [&](const KindRow& kind, const Row& row) {
        return old_coverage.could_tell(kind, row);
    };
    const auto by_new = [&](const KindRow& kind, const Row& row) {
        return new_coverage.could_tell(kind, row);
    };
    // Both sides have the same tables in the same order.
    for (std::size_t i = 0; i < new_tables.size(); ++i) {
        for (const auto& kind : kinds()) {
            if (new_tables[i].kind != kind.kind) continue;
            auto before = old_tables[i], after = new_tables[i];
            leave_out_again(kind, old_tables, new_tables, before, after);
            auto one = compare_entities(kind, before, after, by_old, by_new);
            append(difference.changes, std::move(one.changes));
            append(difference.not_now, std::move(one.not_now));
            append(difference.not_then, std::move(one.not_then));
        }
    }
    compare_findings(from.verdict, to.verdict, difference);
    return difference;
}

}  // namespace qvhost::compare
