#include "compare/table.h"

#include <algorithm>
#include <cstdio>

#include "inventory/fields.h"

namespace qvhost::compare {

namespace {

using inventory::Kind;

template <class Known>
Value value_of(const std::optional<Known>& value) {
    return value ? Value(*value) : Value();
}

Value value_of(const inventory::Texts& texts) {
    if (texts.empty()) return {};
    std::string all;
    for (const auto& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}

template <class Entity>
Table table_of(const Kind<Entity>& kind, const inventory::Inventory& inventory) {
    Table table;
    table.kind = kind.name;
    for (const auto& field : kind.fields) {
        table.columns.emplace_back(field.name);
        table.units.emplace_back(field.unit);
    }
    for (const auto& entity : inventory.*kind.list) {
        Row row;
        row.place = entity.place;
        for (const auto& field : kind.fields)
            row.values.push_back(
                std::visit([&](auto member) { return value_of(entity.*member); }, field.member));
        table.rows.push_back(std::move(row));
    }
    return table;
}

// What was once logged of a thing says nothing of its state.
bool is_of_events(const findings::Finding& finding) { return finding.rule.starts_with("event_"); }

void add_findings(const findings::Verdict& verdict, std::vector<Table>& tables) {
    for (const auto& finding : verdict.findings) {
        if (is_of_events(finding) || finding.severity == findings::Severity::unknown) continue;
        for (const auto& entity : finding.entities) {
            const auto table = std::find_if(tables.begin(), tables.end(), [&](const Table& one) {
                return one.kind == entity.kind;
            });
            if (table == tables.end() || entity.number < 1) continue;
            const auto place = static_cast<std::uint64_t>(entity.number) - 1;
            if (place >= table->rows.size()) continue;
            auto& row = table->rows[static_cast<std::size_t>(place)];
            if (!row.rule.empty() && row.severity <= finding.severity) continue;
            row.severity = finding.severity;
            row.rule = finding.rule;
        }
    }
}

}  // namespace

std::string text_of(const Value& value) {
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "yes" : "no";
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* real = std::get_if<double>(&value)) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.10g", *real);
        return digits;
    }
    return "none";
}

std::size_t Table::column(std::string_view name) const {
    return static_cast<std::size_t>(std::find(columns.begin(), columns.end(), name) -
                                    columns.begin());
}

std::vector<Table> tables_of(const inventory::Inventory& inventory,
                             const findings::Verdict& verdict) {
    std::vector<Table> tables;
    inventory::each_kind([&](const auto& kind) { tables.push_back(table_of(kind, inventory)); });
    add_findings(verdict, tables);
    return tables;
}

}  // namespace qvhost::compare
