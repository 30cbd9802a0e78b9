// The schema of a fleet, told once for SQLite and PostgreSQL: tables and views as data.
//
// Each table's key begins with the host. A history table holds what the tables of that name hold in a report, and a
// row that stays the same from run to run once: it is true from the run `run` on, until the run `until`.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "store/typed_table.h"

namespace qvhost::fleet {

// Counts the changes of tables and views that a database has to be migrated for.
inline constexpr int kFormat = 5;

// `until` of a row that is true in the host's last run.
inline constexpr std::int64_t kForever = std::numeric_limits<std::int64_t>::max();

enum class Dialect { sqlite, postgresql };

struct Column {
    std::string name;
    ColumnType type;
};

struct Table {
    std::string name;
    std::size_t keys;  // how many columns are the key: the first ones
    std::vector<Column> columns;
    bool by_month = false;  // PostgreSQL has a partition a month, by the column `run`
    std::vector<std::string> indexed = {};  // columns by which rows of other hosts are looked for
};

// A table of reports. Its columns in a fleet are `host`, `digest`, `run`, `until` and these.
struct History {
    std::string name;
    std::vector<TypedColumn>
        told;  // the columns as a report has them; of `captures`, as the manifest does
    std::vector<std::string> names;  // as they are called here
    // A column that may move while its row stays the same: -1: none.
    int place = -1;
};
const std::vector<History>& histories();
inline constexpr std::size_t kCaptures = 0;  // the first of them

std::vector<std::string> columns_of(const History& history);

struct View {
    std::string name;
    std::string meaning;    // for people
    std::string sql;        // both dialects read it
    bool is_answer = true;  // an answer to a question, rather than a table for further ones
};
const std::vector<View>& views();

const std::vector<Table>& tables();

// "model TEXT", as a table's definition has it.
std::string declaration(const Column& column, Dialect dialect);

std::string table_statement(const Table& table, Dialect dialect);

// Its name is TABLE_COLUMN.
std::string index_statement(const std::string& table, const std::string& column);

// What makes tables with their indexes, then views, in this order.
std::vector<std::string> table_statements(Dialect dialect);
std::vector<std::string> view_statements();

// The same for one partition.
std::string partition_statement(std::int64_t run);

}  // namespace qvhost::fleet
