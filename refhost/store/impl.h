// The inside of a store, shared by open.cpp, fill.cpp and records.cpp.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "store/names.h"
#include "store/readable_file.h"
#include "store/sqlite_words.h"
#include "store/store.h"

namespace qvhost {

namespace store {

struct Table {
    std::int64_t key = 0;
    std::string id;
    std::int64_t module = 0;  // 0: of no module
    std::string sql_name;
    Layout layout;
    std::string reason;
    NameSet names;
    std::map<std::string, std::string> columns;  // property id -> column
};

// Properties that many records have in common, and the statement that inserts their values.
struct Shape {
    std::int64_t key = 0;
    std::vector<Property> properties;  // without values
    std::vector<bool> extra;           // for each property: whether its value is in qv_extra
    std::unique_ptr<SQLite::Statement> insert;
};

struct Run {
    std::int64_t first = 0;
    std::int64_t last = 0;
    Table* table = nullptr;
    std::string name;
    int index = -1;
    Shape* shape = nullptr;
};

// Runs `work`. SQLite's errors get the file's name and our words.
template <class Work>
auto with_file_name(const std::string& path, Work work) {
    try {
        return work();
    } catch (const SQLite::Exception& error) {
        throw std::runtime_error(path + ": " + sqlite_words(error.getErrorCode(), error.what()));
    }
}

}  // namespace store

struct Store::Impl {
    using Table = store::Table;
    using Shape = store::Shape;

    Impl(const std::string& file, Mode open_mode);
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    Table& table_by_key(std::int64_t key);
    Table* find_table(const std::string& id);  // null: there is none

    // Filling.
    void begin();
    void commit();
    Table& add_table(std::int64_t module, const std::string& id);
    void set_layout(Table& table, const Layout& layout);
    void add(const Record& record);
    void save_run();

    // Counts what is told of a store that is read. Throws if it is too much for what is there.
    void spend(std::size_t bytes);

    // The records of one table, or all (null), in order.
    void each_record(const Table* only, const std::function<void(const Record&)>& take);

    std::string path;
    Mode mode;
    std::unique_ptr<store::ReadableFile> readable;  // null: the store is filled
    SQLite::Database db;
    std::optional<SQLite::Transaction> transaction;
    std::vector<std::unique_ptr<Table>> tables;
    store::NameSet table_names;
    std::map<const Table*, std::vector<std::unique_ptr<Shape>>> shapes;
    store::Run run;
    std::int64_t next_seq = 1;
    std::int64_t next_shape = 1;

private:
    std::uint64_t left = 0;  // bytes that may be told yet

    void expect_plain_tables();
    void expect_no_overlaps();
    void load();
    bool is_empty(const Table& table);
    void add_columns(Table& table, const std::vector<std::string>& ids);
    Shape& shape_of(Table& table, const Record& record);
    std::unique_ptr<Shape> new_shape(Table& table, const Record& record);
    void add_extra(std::int64_t seq, std::size_t position,
                   const std::variant<std::string, int>& value);
};

}  // namespace qvhost
