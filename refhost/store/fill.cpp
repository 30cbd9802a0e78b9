// Filling a store.
#include <algorithm>
#include <utility>

#include "store/impl.h"

namespace qvhost {

using SQLite::Statement;
using store::identifier;

namespace {

constexpr std::size_t kMaxColumns = 1900;  // of one SQL table; SQLite allows 2000

void bind(Statement& statement, int place, const std::variant<std::string, int>& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        statement.bindNoCopy(place, *text);
    } else {
        statement.bind(place, std::get<int>(value));
    }
}

}  // namespace

void Store::Impl::begin() {
    if (mode == Mode::read) throw std::logic_error(path + ": the store is only read");
    if (!transaction) transaction.emplace(db);
}

void Store::Impl::commit() {
    if (!transaction) return;
    save_run();
    transaction->commit();
    transaction.reset();
}

store::Table& Store::Impl::add_table(std::int64_t module, const std::string& id) {
    begin();
    auto& table = *tables.emplace_back(std::make_unique<Table>());
    table.key = static_cast<std::int64_t>(tables.size());
    table.id = id;
    table.module = module;
    table.sql_name = table_names.claim(id);
    table.names.claim("qv_seq");
    Statement insert(db, "INSERT INTO qv_table(tab, id, module, sql_name) VALUES(?,?,?,?)");
    insert.bind(1, table.key);
    insert.bind(2, id);
    insert.bind(3, module);
    insert.bind(4, table.sql_name);
    insert.exec();
    db.exec("CREATE TABLE " + identifier(table.sql_name) + "(qv_seq INTEGER PRIMARY KEY)");
    return table;
}

bool Store::Impl::is_empty(const Table& table) {
    return db.execAndGet("SELECT NOT EXISTS(SELECT 1 FROM " + identifier(table.sql_name) + ")")
               .getInt() != 0;
}

// Gives the properties columns of their table, as long as there is room.
void Store::Impl::add_columns(Table& table, const std::vector<std::string>& ids) {
    const bool first = table.columns.empty();
    std::vector<std::string> added;
    Statement insert(db, "INSERT INTO qv_column VALUES(?,?,?)");
    for (const auto& id : ids) {
        if (table.columns.contains(id) || table.columns.size() >= kMaxColumns) continue;
        const auto name = table.names.claim(id);
        insert.reset();
        insert.bind(1, table.key);
        insert.bind(2, id);
        insert.bind(3, name);
        insert.exec();
        table.columns[id] = name;
        added.push_back(identifier(name));
    }
    const auto sql_name = identifier(table.sql_name);
    if (first && !added.empty() && is_empty(table)) {
        // SQLite reads the whole schema again for every column that it adds to a table.
        std::string columns = "qv_seq INTEGER PRIMARY KEY";
        for (const auto& name : added) columns += ", " + name;
        db.exec("DROP TABLE " + sql_name + "; CREATE TABLE " + sql_name + "(" + columns + ")");
        return;
    }
    for (const auto& name : added) db.exec("ALTER TABLE " + sql_name + " ADD COLUMN " + name);
}

void Store::Impl::set_layout(Table& table, const Layout& layout) {
    begin();
    table.layout = layout;
    const auto* columns = std::get_if<ColumnLayout>(&layout);
    const auto* rows = std::get_if<RowLayout>(&layout);

    Statement update(db, "UPDATE qv_table SET layout=?, width=?, count=?, flag=? WHERE tab=?");
    if (columns) {
        update.bind(1, "columns");
        update.bind(2, columns->width);
        update.bind(3, columns->count);
    } else if (rows) {
        update.bind(1, "rows");
        update.bind(4, rows->flag ? 1 : 0);
    }
    update.bind(5, table.key);
    update.exec();

    Statement forget(db, "DELETE FROM qv_header WHERE tab=?");
    forget.bind(1, table.key);
    forget.exec();
    const std::vector<std::string> none;
    const auto& headers = columns ? columns->headers : rows ? rows->headers : none;
    const std::size_t widths = rows ? rows->widths.size() : 0;
    Statement insert(db, "INSERT INTO qv_header VALUES(?,?,?,?)");
    for (std::size_t i = 0; i < std::max(headers.size(), widths); ++i) {
        insert.reset();
        insert.clearBindings();
        insert.bind(1, table.key);
        insert.bind(2, static_cast<std::int64_t>(i));
        if (i < headers.size()) insert.bind(3, headers[i]);
        if (i < widths) insert.bind(4, rows->widths[i]);
        insert.exec();
    }
    add_columns(table, headers);
}

store::Shape& Store::Impl::shape_of(Table& table, const Record& record) {
    if (run.table == &table && run.shape && same_kinds(run.shape->properties, record.properties))
        return *run.shape;
    auto& known = shapes[&table];
    for (auto& shape : known) {
        if (same_kinds(shape->properties, record.properties)) return *shape;
    }
    return *known.emplace_back(new_shape(table, record));
}

std::unique_ptr<store::Shape> Store::Impl::new_shape(Table& table, const Record& record) {
    auto shape = std::make_unique<Shape>();
    shape->key = next_shape++;
    std::string columns = "qv_seq";
    std::string places = "?";
    std::vector<std::string> ids;
    for (const auto& property : record.properties) ids.push_back(property.id);
    add_columns(table, ids);

    std::map<std::string, int> seen;
    Statement insert(db, "INSERT INTO qv_shape VALUES(?,?,?,?)");
    for (const auto& property : record.properties) {
        const bool extra = seen[property.id]++ > 0 || !table.columns.contains(property.id);
        insert.reset();
        insert.bind(1, shape->key);
        insert.bind(2, static_cast<std::int64_t>(shape->properties.size()));
        insert.bind(3, property.id);
        insert.bind(4, property.display);
        insert.exec();
        shape->properties.push_back({property.id, property.display, {}});
        shape->extra.push_back(extra);
        if (extra) continue;
        columns += "," + identifier(table.columns.at(property.id));
        places += ",?";
    }
    shape->insert = std::make_unique<Statement>(db, "INSERT INTO " + identifier(table.sql_name) +
                                                        "(" + columns + ") VALUES(" + places + ")");
    return shape;
}

void Store::Impl::add(const Record& record) {
    begin();
    Table* table =
        run.table && run.table->id == record.table ? run.table : find_table(record.table);
    if (!table) table = &add_table(0, record.table);
    Shape& shape = shape_of(*table, record);
    const auto seq = next_seq++;

    auto& insert = *shape.insert;
    insert.reset();
    insert.bind(1, seq);
    int place = 2;
    for (std::size_t i = 0; i < record.properties.size(); ++i) {
        if (shape.extra[i]) {
            add_extra(seq, i, record.properties[i].value);
        } else {
            bind(insert, place++, record.properties[i].value);
        }
    }
    insert.exec();

    if (run.table == table && run.shape == &shape && run.name == record.name &&
        run.index == record.index) {
        run.last = seq;
    } else {
        save_run();
        run = {seq, seq, table, record.name, record.index, &shape};
    }
}

void Store::Impl::add_extra(std::int64_t seq, std::size_t position,
                            const std::variant<std::string, int>& value) {
    Statement insert(db, "INSERT INTO qv_extra VALUES(?,?,?)");
    insert.bind(1, seq);
    insert.bind(2, static_cast<std::int64_t>(position));
    bind(insert, 3, value);
    insert.exec();
}

void Store::Impl::save_run() {
    if (!run.table) return;
    Statement save(db, "INSERT OR REPLACE INTO qv_run VALUES(?,?,?,?,?,?)");
    save.bind(1, run.first);
    save.bind(2, run.last);
    save.bind(3, run.table->key);
    save.bind(4, run.name);
    save.bind(5, run.index);
    save.bind(6, run.shape->key);
    save.exec();
}

}  // namespace qvhost
