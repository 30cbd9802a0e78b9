#include "store/store.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "store/names.h"
#include "store/schema.h"

namespace qvhost {

namespace {

using SQLite::Statement;
using store::identifier;

constexpr std::size_t kMostColumns = 1900;  // of one SQL table; SQLite allows 2000

struct Table {
    std::int64_t key = 0;
    std::string id;
    std::int64_t module = 0;  // 0: of no module
    std::string sql_name;
    Layout layout;
    std::string reason;
    store::NameSet names;
    std::map<std::string, std::string> columns;  // property id -> column
};

// The properties of alike records, and the statements that write and read their values.
struct Shape {
    std::int64_t key = 0;
    std::vector<Property> properties;  // without values
    std::vector<bool> extra;           // of each: its value is in qv_extra
    std::unique_ptr<Statement> insert;
};

struct Run {
    std::int64_t first = 0;
    std::int64_t last = 0;
    Table* table = nullptr;
    std::string name;
    int index = -1;
    Shape* shape = nullptr;
};

void bind(Statement& statement, int place, const std::variant<std::string, int>& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        statement.bindNoCopy(place, *text);
    } else {
        statement.bind(place, std::get<int>(value));
    }
}

// A text is set in place: the one of the row before was as long, more or less.
void set_value(std::variant<std::string, int>& value, const SQLite::Column& column) {
    if (column.isInteger()) {
        value = column.getInt();
        return;
    }
    if (!std::holds_alternative<std::string>(value)) value = std::string();
    const auto* bytes = static_cast<const char*>(column.getBlob());
    std::get<std::string>(value).assign(bytes ? bytes : "",
                                        static_cast<std::size_t>(column.getBytes()));
}

// Everything that goes wrong in here is told with the file's name.
template <class Work>
auto told_with(const std::string& path, Work work) {
    try {
        return work();
    } catch (const SQLite::Exception& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

// Somebody may look into a store, or write notes of his own into it, while it grows.
constexpr int kBusyMs = 3000;

int open_flags(Store::Mode mode) {
    // A store is used by one thread, which needs no locks.
    const int access = mode == Store::Mode::read ? SQLite::OPEN_READONLY : SQLite::OPEN_READWRITE;
    return access | SQLite::OPEN_NOMUTEX;
}

void create_private(const std::string& path) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) throw std::runtime_error(path + ": cannot create it: " + std::strerror(errno));
    ::close(fd);
}

void check_readable(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw std::runtime_error(path + ": " + std::strerror(errno));
    ::close(fd);
}

}  // namespace

struct Store::Impl {
    Impl(const std::string& file, Mode open_mode)
        : path(file), mode(open_mode), db(file, open_flags(open_mode), kBusyMs) {
        if (mode == Mode::create) {
            // Power may fail; but what is lost then is in the raw captures. Against the death of
            // the process no waiting for the disk is needed.
            // Pages of 8 KiB: half the system calls of the default, no larger file.
            db.exec("PRAGMA synchronous=OFF; PRAGMA page_size=8192; PRAGMA journal_mode=WAL;");
            db.exec("PRAGMA application_id=" + std::to_string(store::kApplicationId));
            db.exec("PRAGMA user_version=" + std::to_string(store::kVersion));
            db.exec(store::kSchema);
            return;
        }
        if (db.execAndGet("PRAGMA application_id").getInt() != store::kApplicationId)
            throw std::runtime_error(path + ": not a store of qvhost");
        if (db.execAndGet("PRAGMA user_version").getInt() != store::kVersion)
            throw std::runtime_error(path + ": a store of another version of qvhost");
        expect_plain_tables();
        if (mode == Mode::update) db.exec("PRAGMA synchronous=OFF; PRAGMA journal_mode=WAL;");
        load();
    }

    // A store may come from anywhere. It is only read; but a view can be endless, a computed column
    // as large as memory, and a trigger or a virtual table is code.
    void expect_plain_tables() {
        for (const char* others :
             {"SELECT count(*) FROM sqlite_schema WHERE type NOT IN ('table', 'index') OR "
              "(type='table' AND rootpage=0)",
              "SELECT count(*) FROM sqlite_schema AS s, pragma_table_xinfo(s.name) AS c "
              "WHERE s.type='table' AND c.hidden<>0"}) {
            if (db.execAndGet(others).getInt() != 0)
                throw std::runtime_error(path +
                                         ": not a store of qvhost: it computes what it holds");
        }
    }

    ~Impl() {
        if (mode == Mode::read) return;
        try {
            commit();
            shapes.clear();  // their statements
            // One file, which can be read where nothing can be written.
            db.exec("PRAGMA journal_mode=DELETE");
        } catch (const std::exception&) {
            // The store stays as of its last commit, with its log beside it.
        }
    }

    void load() {
        for (Statement q(db,
                         "SELECT tab, id, module, sql_name, layout, width, count, flag, reason "
                         "FROM qv_table ORDER BY tab");
             q.executeStep();) {
            auto& table = *tables.emplace_back(std::make_unique<Table>());
            table.key = q.getColumn(0).getInt64();
            table.id = q.getColumn(1).getString();
            table.module = q.getColumn(2).getInt64();
            table.sql_name = q.getColumn(3).getString();
            table.reason = q.getColumn(8).getString();
            if (!q.getColumn(4).isNull()) {
                table.layout = q.getColumn(4).getString() == "columns"
                                   ? Layout(ColumnLayout{
                                         {}, q.getColumn(5).getUInt(), q.getColumn(6).getUInt()})
                                   : Layout(RowLayout{{}, {}, q.getColumn(7).getInt() != 0});
            }
            table_names.claim(table.sql_name);
            table.names.claim("qv_seq");
        }
        for (Statement q(db, "SELECT tab, id, width FROM qv_header ORDER BY tab, position");
             q.executeStep();) {
            auto& layout = table_by_key(q.getColumn(0).getInt64()).layout;
            if (auto* columns = std::get_if<ColumnLayout>(&layout)) {
                columns->headers.push_back(q.getColumn(1).getString());
            } else if (auto* rows = std::get_if<RowLayout>(&layout)) {
                if (!q.getColumn(1).isNull()) rows->headers.push_back(q.getColumn(1).getString());
                if (!q.getColumn(2).isNull()) rows->widths.push_back(q.getColumn(2).getUInt());
            }
        }
        for (Statement q(db, "SELECT tab, id, sql_name FROM qv_column"); q.executeStep();) {
            auto& table = table_by_key(q.getColumn(0).getInt64());
            table.columns[q.getColumn(1).getString()] = q.getColumn(2).getString();
            table.names.claim(q.getColumn(2).getString());
        }
        next_seq = db.execAndGet("SELECT ifnull(max(last_seq), 0) + 1 FROM qv_run").getInt64();
        next_shape = db.execAndGet("SELECT ifnull(max(shape), 0) + 1 FROM qv_shape").getInt64();
    }

    Table& table_by_key(std::int64_t key) {
        for (auto& table : tables) {
            if (table->key == key) return *table;
        }
        throw std::runtime_error(path + ": the store names a table that it does not have");
    }

    Table* find_table(const std::string& id) {
        for (auto& table : tables) {
            if (table->id == id) return table.get();
        }
        return nullptr;
    }

    void begin() {
        if (mode == Mode::read) throw std::logic_error(path + ": the store is only read");
        if (!transaction) transaction.emplace(db);
    }

    void commit() {
        if (!transaction) return;
        save_run();
        transaction->commit();
        transaction.reset();
    }

    Table& add_table(std::int64_t module, const std::string& id) {
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

    bool is_empty(const Table& table) {
        return db.execAndGet("SELECT NOT EXISTS(SELECT 1 FROM " + identifier(table.sql_name) + ")")
                   .getInt() != 0;
    }

    // Gives the properties columns of their table, as long as there is room.
    void add_columns(Table& table, const std::vector<std::string>& ids) {
        const bool first = table.columns.empty();
        std::vector<std::string> added;
        Statement insert(db, "INSERT INTO qv_column VALUES(?,?,?)");
        for (const auto& id : ids) {
            if (table.columns.contains(id) || table.columns.size() >= kMostColumns) continue;
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

    void set_layout(Table& table, const Layout& layout) {
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
        const auto& headers = columns ? columns->headers : rows ? rows->headers : no_headers;
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

    Shape& shape_of(Table& table, const Record& record) {
        if (run.table == &table && run.shape &&
            same_kinds(run.shape->properties, record.properties))
            return *run.shape;
        auto& known = shapes[&table];
        for (auto& shape : known) {
            if (same_kinds(shape->properties, record.properties)) return *shape;
        }
        return *known.emplace_back(new_shape(table, record));
    }

    std::unique_ptr<Shape> new_shape(Table& table, const Record& record) {
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
        shape->insert =
            std::make_unique<Statement>(db, "INSERT INTO " + identifier(table.sql_name) + "(" +
                                                columns + ") VALUES(" + places + ")");
        return shape;
    }

    void add(const Record& record) {
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

    void add_extra(std::int64_t seq, std::size_t position,
                   const std::variant<std::string, int>& value) {
        Statement insert(db, "INSERT INTO qv_extra VALUES(?,?,?)");
        insert.bind(1, seq);
        insert.bind(2, static_cast<std::int64_t>(position));
        bind(insert, 3, value);
        insert.exec();
    }

    void save_run() {
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

    std::vector<Property> read_shape(std::int64_t key) {
        std::vector<Property> properties;
        Statement q(db, "SELECT id, display FROM qv_shape WHERE shape=? ORDER BY position");
        q.bind(1, key);
        while (q.executeStep())
            properties.push_back({q.getColumn(0).getString(), q.getColumn(1).getString(), {}});
        return properties;
    }

    // The rows of one shape of one table between two sequence numbers.
    struct Reader {
        std::vector<Property> properties;
        std::vector<int> column;  // of each property in the statement; -1: in qv_extra
        std::unique_ptr<Statement> rows;
    };

    Reader reader_for(const Table& table, std::int64_t shape) {
        Reader reader{read_shape(shape), {}, nullptr};
        std::string columns = "qv_seq";
        int next = 1;
        std::map<std::string, int> seen;
        for (const auto& property : reader.properties) {
            const auto known = table.columns.find(property.id);
            if (known == table.columns.end() || seen[property.id]++ > 0) {
                reader.column.push_back(-1);
                continue;
            }
            columns += "," + identifier(known->second);
            reader.column.push_back(next++);
        }
        reader.rows = std::make_unique<Statement>(
            db, "SELECT " + columns + " FROM " + identifier(table.sql_name) +
                    " WHERE qv_seq BETWEEN ? AND ? ORDER BY qv_seq");
        return reader;
    }

    void each_record(const Table* only, const std::function<void(const Record&)>& take) {
        // A transaction that fills the store has its last run in memory.
        if (transaction) save_run();
        std::map<std::int64_t, Reader> readers;
        Statement extra(db, "SELECT value FROM qv_extra WHERE qv_seq=? AND position=?");
        Statement runs(db,
                       "SELECT first_seq, last_seq, tab, name, record_index, shape FROM qv_run "
                       "WHERE ?1 IS NULL OR tab=?1 ORDER BY first_seq");
        if (only) runs.bind(1, only->key);
        Record record;
        while (runs.executeStep()) {
            const auto& table = table_by_key(runs.getColumn(2).getInt64());
            const auto shape = runs.getColumn(5).getInt64();
            auto known = readers.find(shape);
            if (known == readers.end())
                known = readers.emplace(shape, reader_for(table, shape)).first;
            auto& reader = known->second;

            record.table = table.id;
            record.name = runs.getColumn(3).getString();
            record.index = runs.getColumn(4).getInt();
            record.properties = reader.properties;
            auto& rows = *reader.rows;
            rows.reset();
            rows.bind(1, runs.getColumn(0).getInt64());
            rows.bind(2, runs.getColumn(1).getInt64());
            while (rows.executeStep()) {
                for (std::size_t i = 0; i < record.properties.size(); ++i) {
                    auto& value = record.properties[i].value;
                    if (reader.column[i] >= 0) {
                        set_value(value, rows.getColumn(reader.column[i]));
                        continue;
                    }
                    extra.reset();
                    extra.bind(1, rows.getColumn(0).getInt64());
                    extra.bind(2, static_cast<std::int64_t>(i));
                    if (extra.executeStep()) set_value(value, extra.getColumn(0));
                }
                take(record);
            }
        }
    }

    std::string path;
    Mode mode;
    SQLite::Database db;
    std::optional<SQLite::Transaction> transaction;
    std::vector<std::unique_ptr<Table>> tables;
    store::NameSet table_names;
    std::map<const Table*, std::vector<std::unique_ptr<Shape>>> shapes;
    Run run;
    std::int64_t next_seq = 1;
    std::int64_t next_shape = 1;
    const std::vector<std::string> no_headers;
};

Store::Store(const std::string& path, Mode mode) {
    if (mode == Mode::create) {
        create_private(path);
    } else {
        check_readable(path);
    }
    impl_ = told_with(path, [&] { return std::make_unique<Impl>(path, mode); });
}

Store::~Store() = default;
Store::Store(Store&&) noexcept = default;

void Store::add_module(const std::string& name, const std::string& display) {
    told_with(impl_->path, [&] {
        impl_->begin();
        Statement insert(impl_->db, "INSERT OR IGNORE INTO qv_module(name, display) VALUES(?,?)");
        insert.bind(1, name);
        insert.bind(2, display);
        insert.exec();
    });
}

void Store::add_table(const std::string& module, const std::string& id) {
    told_with(impl_->path, [&] {
        Statement q(impl_->db, "SELECT module FROM qv_module WHERE name=?");
        q.bind(1, module);
        const std::int64_t key = q.executeStep() ? q.getColumn(0).getInt64() : 0;
        auto* table = impl_->find_table(id);
        if (!table) {
            impl_->add_table(key, id);
            return;
        }
        // A record of it came before, from a module that did not say the table is its own.
        if (table->module != 0) return;
        impl_->begin();
        table->module = key;
        Statement update(impl_->db, "UPDATE qv_table SET module=? WHERE tab=?");
        update.bind(1, key);
        update.bind(2, table->key);
        update.exec();
    });
}

void Store::set_layout(const std::string& id, const Layout& layout) {
    told_with(impl_->path, [&] {
        auto* table = impl_->find_table(id);
        impl_->set_layout(table ? *table : impl_->add_table(0, id), layout);
    });
}

void Store::set_reason(const std::string& id, const std::string& reason) {
    told_with(impl_->path, [&] {
        auto* table = impl_->find_table(id);
        if (!table) return;
        impl_->begin();
        table->reason = reason;
        Statement update(impl_->db, "UPDATE qv_table SET reason=? WHERE tab=?");
        update.bind(1, reason);
        update.bind(2, table->key);
        update.exec();
    });
}

void Store::add(const Record& record) {
    told_with(impl_->path, [&] { impl_->add(record); });
}

void Store::commit() {
    told_with(impl_->path, [&] { impl_->commit(); });
}

void Store::set_meta(const std::string& key, const std::string& value) {
    told_with(impl_->path, [&] {
        impl_->begin();
        Statement insert(impl_->db, "INSERT OR REPLACE INTO qv_meta VALUES(?,?)");
        insert.bind(1, key);
        insert.bind(2, value);
        insert.exec();
    });
}

std::string Store::meta(const std::string& key) const {
    return told_with(impl_->path, [&] {
        Statement q(impl_->db, "SELECT value FROM qv_meta WHERE key=?");
        q.bind(1, key);
        return q.executeStep() ? q.getColumn(0).getString() : std::string();
    });
}

void Store::set_facts(const std::vector<Fact>& facts) {
    told_with(impl_->path, [&] {
        impl_->begin();
        impl_->db.exec("DELETE FROM qv_fact");
        Statement insert(impl_->db, "INSERT INTO qv_fact(label, value, source) VALUES(?,?,?)");
        for (const auto& fact : facts) {
            insert.reset();
            insert.bind(1, fact.label);
            insert.bind(2, fact.value);
            insert.bind(3, fact.source);
            insert.exec();
        }
    });
}

std::vector<Fact> Store::facts() const {
    return told_with(impl_->path, [&] {
        std::vector<Fact> facts;
        for (Statement q(impl_->db, "SELECT label, value, source FROM qv_fact ORDER BY position");
             q.executeStep();)
            facts.push_back({q.getColumn(0).getString(), q.getColumn(1).getString(),
                             q.getColumn(2).getString()});
        return facts;
    });
}

void Store::set_commands(const std::vector<CommandInfo>& commands) {
    told_with(impl_->path, [&] {
        impl_->begin();
        impl_->db.exec("DELETE FROM qv_command");
        Statement insert(
            impl_->db,
            "INSERT INTO qv_command(command, seconds, outcome, cut_off) VALUES(?,?,?,?)");
        for (const auto& command : commands) {
            insert.reset();
            insert.bind(1, command.text);
            insert.bind(2, command.seconds);
            insert.bind(3, command.outcome);
            insert.bind(4, command.cut_off ? 1 : 0);
            insert.exec();
        }
    });
}

std::vector<CommandInfo> Store::commands() const {
    return told_with(impl_->path, [&] {
        std::vector<CommandInfo> commands;
        for (Statement q(
                 impl_->db,
                 "SELECT command, seconds, outcome, cut_off FROM qv_command ORDER BY position");
             q.executeStep();)
            commands.push_back({q.getColumn(0).getString(), q.getColumn(1).getDouble(),
                                q.getColumn(2).getString(), q.getColumn(3).getInt() != 0});
        return commands;
    });
}

std::vector<ModuleInfo> Store::modules() const {
    return told_with(impl_->path, [&] {
        std::vector<ModuleInfo> modules;
        std::map<std::int64_t, std::size_t> place;
        for (Statement q(impl_->db, "SELECT module, name, display FROM qv_module ORDER BY module");
             q.executeStep();) {
            place[q.getColumn(0).getInt64()] = modules.size();
            modules.push_back({q.getColumn(1).getString(), q.getColumn(2).getString(), {}});
        }
        for (const auto& table : impl_->tables) {
            if (!place.contains(table->module)) {
                place[table->module] = modules.size();
                modules.emplace_back();
            }
            const auto records =
                impl_->db.execAndGet("SELECT count(*) FROM " + identifier(table->sql_name))
                    .getInt64();
            modules[place[table->module]].tables.push_back(
                {table->id, table->layout, records, table->reason});
        }
        return modules;
    });
}

std::vector<PropertyInfo> Store::properties(const std::string& table) const {
    return told_with(impl_->path, [&] {
        if (impl_->transaction) impl_->save_run();
        std::vector<PropertyInfo> properties;
        std::set<std::string> seen;
        Statement q(impl_->db,
                    "SELECT s.id, s.display FROM qv_shape s WHERE s.shape IN "
                    "(SELECT shape FROM qv_run WHERE tab = (SELECT tab FROM qv_table WHERE id=?)) "
                    "ORDER BY s.shape, s.position");
        q.bind(1, table);
        while (q.executeStep()) {
            const auto id = q.getColumn(0).getString();
            if (seen.insert(id).second) properties.push_back({id, q.getColumn(1).getString()});
        }
        return properties;
    });
}

void Store::each_record(const std::function<void(const Record&)>& take) const {
    told_with(impl_->path, [&] { impl_->each_record(nullptr, take); });
}

void Store::each_record(const std::string& table,
                        const std::function<void(const Record&)>& take) const {
    told_with(impl_->path, [&] {
        if (const auto* known = impl_->find_table(table)) impl_->each_record(known, take);
    });
}

}  // namespace qvhost
