#include "fleet/migrate.h"

#include <algorithm>
#include <stdexcept>

#include "store/typed_value.h"

namespace qvhost::fleet {

namespace {

// Whoever makes or migrates tables holds this key, which is no host's: those are not negative.
constexpr std::int64_t kSchemaLock = -1;

// What leads from a format to the next one: columns that came to tables, tables as they were in that format, and
// indexes. Views are dropped before and made anew behind it.
struct AddedColumn {
    const char* table;
    Column column;
};
struct AddedIndex {
    const char* table;
    const char* column;
};
struct Migration {
    int from;
    std::vector<AddedColumn> columns;
    std::vector<Table> tables = {};
    std::vector<AddedIndex> indexes = {};
};

// clang-format off
const Table kVolumeMembers = {"volume_members", 3, {
    {"host",        ColumnType::integer}, {"digest",    ColumnType::integer}, {"run",       ColumnType::integer},
    {"until",       ColumnType::integer}, {"controller", ColumnType::integer}, {"drive_group", ColumnType::integer},
    {"volume",      ColumnType::integer}, {"volume_name", ColumnType::text},  {"span",      ColumnType::integer},
    {"position",    ColumnType::integer}, {"is_spare",  ColumnType::boolean}, {"state",     ColumnType::text},
    {"enclosure",   ColumnType::integer}, {"slot",      ColumnType::integer}, {"device_id", ColumnType::integer},
    {"device",      ColumnType::text},    {"serial",    ColumnType::text},    {"capture",   ColumnType::text},
    {"line",        ColumnType::integer},
}};

const std::vector<Migration> kMigrations = {
    {1,
     {{"findings", {"acknowledged_until", ColumnType::text}},
      {"findings", {"acknowledged_by", ColumnType::text}},
      {"findings", {"acknowledged_why", ColumnType::text}}}},
    {2, {}, {kVolumeMembers}},
    {3, {}, {}, {{"hosts", "machine_id"}, {"hosts", "serial"}}},
    {4, {{"drives", {"shield_counter", ColumnType::integer}}}},
};
// clang-format on

int format_of(Database& db) {
    if (!db.has("fleet_format")) return 0;
    std::int64_t format = 0;
    db.each("SELECT max(format) FROM fleet_format", {},
            [&](const Row& row) { format = integer_of(row[0]); });
    if (format < 1 || format > kFormat)
        throw std::runtime_error("the database is of format " + std::to_string(format) +
                                 ", and this program knows those up to " + std::to_string(kFormat));
    return static_cast<int>(format);
}

void create(Database& db) {
    for (const auto& statement : table_statements(db.dialect())) db.execute(statement);
}

void drop_views(Database& db) {
    std::for_each(views().rbegin(), views().rend(),
                  [&](const View& view) { db.execute("DROP VIEW IF EXISTS " + view.name); });
}

void migrate(Database& db, int format) {
    drop_views(db);
    for (const auto& migration : kMigrations) {
        if (migration.from < format) continue;
        for (const auto& added : migration.columns)
            db.execute(std::string("ALTER TABLE ") + added.table + " ADD COLUMN " +
                       declaration(added.column, db.dialect()));
        for (const auto& table : migration.tables) db.execute(table_statement(table, db.dialect()));
        for (const auto& [table, column] : migration.indexes)
            db.execute(index_statement(table, column));
    }
}

}  // namespace

void prepare_schema(Database& db, bool may_create) {
    if (format_of(db) == kFormat) return;
    Transaction transaction(db);
    db.lock({kSchemaLock});
    const int format = format_of(db);
    if (format == kFormat) return;
    if (format == 0 && !may_create)
        throw std::runtime_error("the database holds no fleet: \"qvfleet import\" makes one");
    if (format == 0) {
        create(db);
    } else {
        migrate(db, format);
    }
    for (const auto& statement : view_statements()) db.execute(statement);
    db.execute("DELETE FROM fleet_format");
    db.execute("INSERT INTO fleet_format VALUES (" + std::to_string(kFormat) + ")");
    transaction.commit();
}

}  // namespace qvhost::fleet
