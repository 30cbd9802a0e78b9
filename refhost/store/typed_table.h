// Tables of a store beside the records': of fixed columns with SQL types, such as `drives` and `events`.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "store/store.h"

namespace qvhost {

enum class ColumnType { integer, real, text, boolean };  // boolean: 0 or 1

struct TypedColumn {
    const char* name;
    ColumnType type;
};

// A table as whoever writes it declares it.
struct DeclaredTypedTable {
    const char* name;
    std::vector<TypedColumn> columns;
};

// Their names. No table of records takes one of them.
inline constexpr auto kTypedTables = std::to_array<std::string_view>({
    "systems",          "processors",       "memory_modules", "bmcs",
    "sensors",          "power_supplies",   "frus",           "controllers",
    "batteries",        "enclosures",       "volumes",        "drives",
    "volume_members",   "events",           "findings",       "finding_evidence",
    "finding_entities", "finding_growth",   "health",         "health_captures",
    "health_missing",   "unchanged_values",
});

// Writes rows to a new table. A table of that name that an earlier writer made goes.
class TypedTableWriter {
public:
    TypedTableWriter(Store& store, const char* table, std::span<const TypedColumn> columns);
    ~TypedTableWriter();
    TypedTableWriter(TypedTableWriter&&) noexcept;

    // As many values as there are columns, in their order.
    void add(const std::vector<TypedValue>& row);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Hands on each row, in the order in which they were added; a value of another type than its column's
// is NULL, as is one of a column that the table does not have. Nothing where the store has no such table:
// an older one.
void each_typed_row(const Store& store, const char* table, std::span<const TypedColumn> columns,
                    const std::function<void(const std::vector<TypedValue>&)>& take);

// The same until `take` has enough and returns false.
void each_typed_row_while(const Store& store, const char* table,
                          std::span<const TypedColumn> columns,
                          const std::function<bool(const std::vector<TypedValue>&)>& take);

// The table as it is in the file, for views that show whatever it has. None: there is no such table.
struct StoredColumn {
    std::string name;
    ColumnType type = ColumnType::text;
};
std::vector<StoredColumn> stored_columns(const Store& store, const std::string& table);

// Its rows in their order, with values as they are.
void each_stored_row(const Store& store, const std::string& table,
                     const std::function<void(const std::vector<TypedValue>&)>& take);
std::int64_t count_stored_rows(const Store& store, const std::string& table);

}  // namespace qvhost
