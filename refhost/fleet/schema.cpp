#include "fleet/schema.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>

#include "fleet/times.h"
#include "verdict/inventory_tables.h"
#include "verdict/verdict_tables.h"

namespace qvhost::fleet {

namespace {

// The entity that a finding is about: in a report the number of its row, here that row's digest.
constexpr const char* kEntityOfFinding = "entity";

History history_of(const DeclaredTypedTable& table) {
    History history{table.name, table.columns, {}};
    for (const auto& column : table.columns) history.names.emplace_back(column.name);
    // New events move the older ones to other lines.
    if (history.name == "events")
        history.place = static_cast<int>(
            std::find(history.names.begin(), history.names.end(), "line") - history.names.begin());
    if (history.name == "finding_entities") history.names.back() = kEntityOfFinding;
    return history;
}

std::vector<History> made_histories() {
    std::vector<History> all;
    all.push_back({
        "captures",
        {{"name", ColumnType::text}, {"bytes", ColumnType::integer}, {"sha256", ColumnType::text}},
        {"name",                     "bytes",                        "sha256"                    }
    });
    for (const auto& table : inventory_tables()) all.push_back(history_of(table));
    for (const auto& table : verdict_tables()) all.push_back(history_of(table));
    return all;
}

// clang-format off
const std::vector<Table> kOwnTables = {
    {"fleet_format", 1, {{"format", ColumnType::integer}}},
    {"hosts", 1,
     {{"host",       ColumnType::integer},
      {"machine_id", ColumnType::text},
      {"serial",     ColumnType::text},
      {"name",       ColumnType::text},
      {"first_run",  ColumnType::integer},
      {"last_run",   ColumnType::integer}},
     false, {"machine_id", "serial"}},
    {"runs", 2,
     {{"host",            ColumnType::integer},
      {"run",             ColumnType::integer},
      {"started",         ColumnType::text},
      {"finished",        ColumnType::text},
      {"status",          ColumnType::text},
      {"incomplete_because", ColumnType::text},
      {"name",            ColumnType::text},
      {"os",              ColumnType::text},
      {"kernel",          ColumnType::text},
      {"uptime_seconds",  ColumnType::integer},
      {"run_as",          ColumnType::text},
      {"version",         ColumnType::text},
      {"bundle",          ColumnType::text},
      {"manifest_sha256", ColumnType::text}},
     true},
};
// clang-format on

std::vector<Table> made_tables() {
    auto all = kOwnTables;
    for (const auto& history : histories()) {
        Table table{.name = history.name, .keys = 3, .columns = {}};
        for (const auto* name : {"host", "digest", "run", "until"})
            table.columns.push_back({name, ColumnType::integer});
        for (std::size_t i = 0; i < history.told.size(); ++i)
            table.columns.push_back({history.names[i], history.told[i].type});
        all.push_back(std::move(table));
    }
    return all;
}

const char* sql_type(ColumnType type, Dialect dialect) {
    switch (type) {
        case ColumnType::integer: return "BIGINT";
        case ColumnType::real: return "DOUBLE PRECISION";
        // By bytes on both, whatever the locale of a server.
        case ColumnType::text: return dialect == Dialect::sqlite ? "TEXT" : "TEXT COLLATE \"C\"";
        case ColumnType::boolean: return "SMALLINT";
    }
    return "";
}

}  // namespace

const std::vector<History>& histories() {
    static const auto kAll = made_histories();
    return kAll;
}

std::vector<std::string> columns_of(const History& history) {
    std::vector<std::string> names{"host", "digest", "run", "until"};
    names.insert(names.end(), history.names.begin(), history.names.end());
    return names;
}

const std::vector<Table>& tables() {
    static const auto kAll = made_tables();
    return kAll;
}

std::string declaration(const Column& column, Dialect dialect) {
    return column.name + " " + sql_type(column.type, dialect);
}

std::string table_statement(const Table& table, Dialect dialect) {
    std::vector<std::string> parts;
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        parts.push_back(declaration(table.columns[i], dialect) +
                        (i < table.keys ? " NOT NULL" : ""));
        if (i < table.keys) keys.push_back(table.columns[i].name);
    }
    parts.push_back("PRIMARY KEY (" + boost::join(keys, ", ") + ")");
    std::string statement = "CREATE TABLE " + table.name + " (" + boost::join(parts, ", ") + ")";
    if (dialect == Dialect::sqlite) statement += " WITHOUT ROWID";
    if (dialect == Dialect::postgresql && table.by_month) statement += " PARTITION BY RANGE (run)";
    return statement;
}

std::string index_statement(const std::string& table, const std::string& column) {
    return "CREATE INDEX " + table + "_" + column + " ON " + table + " (" + column + ")";
}

std::vector<std::string> table_statements(Dialect dialect) {
    std::vector<std::string> statements;
    for (const auto& table : tables()) {
        statements.push_back(table_statement(table, dialect));
        for (const auto& column : table.indexed)
            statements.push_back(index_statement(table.name, column));
    }
    return statements;
}

std::vector<std::string> view_statements() {
    std::vector<std::string> statements;
    for (const auto& view : views())
        statements.push_back("CREATE VIEW " + view.name + " AS " + view.sql);
    return statements;
}

std::string partition_statement(std::int64_t run) {
    const auto month = month_of(run);
    return "CREATE TABLE IF NOT EXISTS runs_" + month.name +
           " PARTITION OF runs FOR VALUES FROM (" + std::to_string(month.begin) + ") TO (" +
           std::to_string(month.end) + ")";
}

}  // namespace qvhost::fleet
