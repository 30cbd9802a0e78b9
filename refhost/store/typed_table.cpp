#include "store/typed_table.h"

#include <sqlite3.h>

#include <utility>

#include "store/impl.h"
#include "store/statement.h"

namespace qvhost {

using SQLite::Statement;
using store::identifier;
using store::with_file_name;

namespace {

const char* sql_type(ColumnType type) {
    switch (type) {
        case ColumnType::integer: return "INTEGER";
        case ColumnType::real: return "REAL";
        case ColumnType::text: return "TEXT";
        case ColumnType::boolean: return "BOOLEAN";
    }
    return "";
}

// Of a store of somebody else: text, whatever it says.
ColumnType type_of(const std::string& sql) {
    for (const auto type : {ColumnType::integer, ColumnType::real, ColumnType::boolean}) {
        if (sql == sql_type(type)) return type;
    }
    return ColumnType::text;
}

// Assigns to the text of the row before, whose memory is mostly large enough.
void set_text(TypedValue& value, const SQLite::Column& cell) {
    if (!std::holds_alternative<std::string>(value)) value = std::string();
    const char* text = cell.getText();
    std::get<std::string>(value).assign(text, static_cast<std::size_t>(cell.getBytes()));
}

void set_value(TypedValue& value, const SQLite::Column& cell, ColumnType type) {
    const int stored = cell.getType();
    switch (type) {
        case ColumnType::integer:
        case ColumnType::boolean:
            if (stored == SQLITE_INTEGER) return void(value = cell.getInt64());
            break;
        case ColumnType::real:
            if (stored == SQLITE_INTEGER || stored == SQLITE_FLOAT)
                return void(value = cell.getDouble());
            break;
        case ColumnType::text:
            if (stored == SQLITE_TEXT) return set_text(value, cell);
            break;
    }
    value = std::monostate();
}

// Whether the file has the table; with a column, whether the table has it.
bool has(const SQLite::Database& db, const char* table, const char* column = nullptr) {
    return sqlite3_table_column_metadata(db.getHandle(), nullptr, table, column, nullptr, nullptr,
                                         nullptr, nullptr, nullptr) == SQLITE_OK;
}

// The columns as a SELECT names them. SQLite takes a quoted name that is no column for a text, so one that
// the table does not have is NULL.
std::string selected(const SQLite::Database& db, const char* table,
                     std::span<const TypedColumn> columns) {
    std::string list;
    for (const auto& column : columns) {
        if (!list.empty()) list += ", ";
        list += has(db, table, column.name) ? identifier(column.name) : "NULL";
    }
    return list;
}

}  // namespace

struct TypedTableWriter::Impl {
    Store::Impl& store;
    Statement insert;

    static std::string prepare(Store::Impl& store, const char* table,
                               std::span<const TypedColumn> columns) {
        store.begin();
        std::string names;
        std::string places;
        for (const auto& column : columns) {
            if (!names.empty()) names += ", ";
            names += identifier(column.name) + " " + sql_type(column.type);
            places += places.empty() ? "?" : ",?";
        }
        store.db.exec("DROP TABLE IF EXISTS " + identifier(table));
        store.db.exec("CREATE TABLE " + identifier(table) + "(" + names + ")");
        return "INSERT INTO " + identifier(table) + " VALUES(" + places + ")";
    }

    Impl(Store::Impl& of, const char* table, std::span<const TypedColumn> columns)
        : store(of), insert(of.db, prepare(of, table, columns)) {}
};

TypedTableWriter::TypedTableWriter(Store& store, const char* table,
                                   std::span<const TypedColumn> columns)
    : impl_(with_file_name(store.impl_->path,
                           [&] { return std::make_unique<Impl>(*store.impl_, table, columns); })) {}

TypedTableWriter::~TypedTableWriter() = default;
TypedTableWriter::TypedTableWriter(TypedTableWriter&&) noexcept = default;

void TypedTableWriter::add(const std::vector<TypedValue>& row) {
    with_file_name(impl_->store.path, [&] {
        store::bind_row(impl_->insert, row);
        impl_->insert.exec();
    });
}

void each_typed_row(const Store& store, const char* table, std::span<const TypedColumn> columns,
                    const std::function<void(const std::vector<TypedValue>&)>& take) {
    each_typed_row_while(store, table, columns, [&](const std::vector<TypedValue>& row) {
        take(row);
        return true;
    });
}

void each_typed_row_while(const Store& store, const char* table,
                          std::span<const TypedColumn> columns,
                          const std::function<bool(const std::vector<TypedValue>&)>& take) {
    with_file_name(store.impl_->path, [&] {
        auto& db = store.impl_->db;
        if (!has(db, table)) return;
        std::vector<TypedValue> row(columns.size());
        for (Statement q(db, "SELECT " + selected(db, table, columns) + " FROM " +
                                 identifier(table) + " ORDER BY rowid");
             q.executeStep();) {
            for (std::size_t i = 0; i < columns.size(); ++i)
                set_value(row[i], q.getColumn(static_cast<int>(i)), columns[i].type);
            if (!take(row)) return;
        }
    });
}

std::vector<StoredColumn> stored_columns(const Store& store, const std::string& table) {
    return with_file_name(store.impl_->path, [&] {
        std::vector<StoredColumn> columns;
        Statement q(store.impl_->db, "SELECT name, type FROM pragma_table_info(?)");
        q.bind(1, table);
        while (q.executeStep())
            columns.push_back({q.getColumn(0).getString(), type_of(q.getColumn(1).getString())});
        return columns;
    });
}

void each_stored_row(const Store& store, const std::string& table,
                     const std::function<void(const std::vector<TypedValue>&)>& take) {
    with_file_name(store.impl_->path, [&] {
        auto& db = store.impl_->db;
        if (!db.tableExists(table)) return;
        std::vector<TypedValue> row;
        for (Statement q(db, "SELECT * FROM " + identifier(table) + " ORDER BY rowid");
             q.executeStep();) {
            store::take_row(q, row);
            take(row);
        }
    });
}

std::int64_t count_stored_rows(const Store& store, const std::string& table) {
    return with_file_name(store.impl_->path, [&]() -> std::int64_t {
        auto& db = store.impl_->db;
        if (!db.tableExists(table)) return 0;
        return db.execAndGet("SELECT count(*) FROM " + identifier(table)).getInt64();
    });
}

}  // namespace qvhost
