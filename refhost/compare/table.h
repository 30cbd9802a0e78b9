// Entities of one kind as rows of values, whatever struct they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "findings/finding.h"
#include "inventory/inventory.h"

namespace qvhost::compare {

// monostate: not known.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

inline bool is_known(const Value& value) { return value.index() != 0; }

// For people: "none", "yes", "12", "1.5", the text itself.
std::string text_of(const Value& value);

struct Row {
    std::vector<Value> values;  // as many as the table has columns
    findings::Place place;
    // The worst finding about it; notice and an empty rule where nothing calls for attention.
    findings::Severity severity = findings::Severity::notice;
    std::string rule;
};

struct Table {
    std::string kind;  // "drives"
    std::vector<std::string> columns;
    std::vector<std::string> units;  // of each column; "" if it has none
    std::vector<Row> rows;

    // The column's place; the number of columns if there is none.
    std::size_t column(std::string_view name) const;
};

// A table for each kind of entity, in the order of report.json, with what the findings say of each.
std::vector<Table> tables_of(const inventory::Inventory& inventory,
                             const findings::Verdict& verdict);

}  // namespace qvhost::compare
