// Opening and closing a store.
#include <sqlite3.h>

#include <utility>

#include "files/new_file.h"
#include "store/impl.h"
#include "store/schema.h"
#include "store/typed_table.h"

namespace qvhost {

using SQLite::Statement;

namespace {

// How long to wait for another program that has the store open while it grows.
constexpr int kBusyMs = 3000;

// How much all views of a store may tell. What many records share (labels, names) is there once and told with
// each of them: some twenty bytes for one that the store has.
constexpr std::uint64_t kMostTold = std::uint64_t{16} << 20;
constexpr std::uint64_t kMostToldForAByte = 64;

int open_flags(Store::Mode mode) {
    // A store is used by one thread, which needs no locks.
    const int access = mode == Store::Mode::read ? SQLite::OPEN_READONLY | SQLite::OPEN_URI
                                                 : SQLite::OPEN_READWRITE;
    return access | SQLite::OPEN_NOMUTEX;
}

}  // namespace

Store::Impl::Impl(const std::string& file, Mode open_mode)
    : path(file),
      mode(open_mode),
      readable(open_mode == Mode::read ? std::make_unique<store::ReadableFile>(file) : nullptr),
      db(readable ? readable->uri() : file, open_flags(open_mode), kBusyMs) {
    for (const auto name : kTypedTables) table_names.claim(name);
    if (readable) left = kMostTold + kMostToldForAByte * readable->bytes();
    if (mode == Mode::create) {
        // synchronous=OFF does not wait for the disk. If the process dies, nothing is lost; if the
        // power fails, the raw captures still have what is lost here.
        // Pages of 8 KiB take half the system calls of the default and make no larger file.
        db.exec("PRAGMA synchronous=OFF; PRAGMA page_size=8192; PRAGMA journal_mode=WAL;");
        db.exec("PRAGMA application_id=" + std::to_string(store::kApplicationId));
        db.exec("PRAGMA user_version=" + std::to_string(store::kVersion));
        db.exec(store::kSchema);
        return;
    }
    if (db.execAndGet("PRAGMA application_id").getInt() != store::kApplicationId)
        throw std::runtime_error(path + ": " + store::sqlite_words(SQLITE_NOTADB, ""));
    if (db.execAndGet("PRAGMA user_version").getInt() != store::kVersion)
        throw std::runtime_error(path + ": a store of another version of qvhost");
    expect_plain_tables();
    expect_no_overlaps();
    if (mode == Mode::update) db.exec("PRAGMA synchronous=OFF; PRAGMA journal_mode=WAL;");
    load();
}

Store::Impl::~Impl() {
    if (mode == Mode::read) return;
    try {
        commit();
        shapes.clear();  // their statements
            // Leave one file, which can be read from a place where nothing can be written.
        db.exec("PRAGMA journal_mode=DELETE");
    } catch (const std::exception&) {
        // The store stays as of its last commit, with its log beside it.
    }
}

// A store may come from an untrusted place. Reading it must not run what somebody put into it: a view
// may never end, a computed column may fill the memory, a trigger or a virtual table is code. A column is computed by
// "AS (...)": tables without these words need not be asked for each of their columns.
void Store::Impl::expect_plain_tables() {
    for (const char* others :
         {"SELECT count(*) FROM sqlite_schema WHERE type NOT IN ('table', 'index') OR "
          "(type='table' AND rootpage=0)",
          "SELECT count(*) FROM sqlite_schema AS s, pragma_table_xinfo(s.name) AS c "
          "WHERE s.type='table' AND CAST(s.sql AS TEXT) LIKE '%AS%(%' AND c.hidden<>0"}) {
        if (db.execAndGet(others).getInt() != 0)
            throw std::runtime_error(path + ": not a store of qvhost: it computes what it holds");
    }
}

// Nothing that the store holds may be told twice: then what can be told is bounded by its size.
void Store::Impl::expect_no_overlaps() {
    constexpr const char* kOverlaps[] = {
        "SELECT count(*) FROM (SELECT first_seq, last_seq, lead(first_seq) OVER (ORDER BY first_seq) "
        "AS next FROM qv_run) WHERE typeof(last_seq) <> 'integer' OR last_seq < first_seq OR "
        "last_seq >= next",
        "SELECT count(*) - count(DISTINCT lower(sql_name)) FROM qv_table",
    };
    for (const char* overlaps : kOverlaps) {
        if (db.execAndGet(overlaps).getInt64() != 0)
            throw std::runtime_error(path + ": not a store of qvhost: its records overlap");
    }
}

void Store::Impl::spend(std::size_t bytes) {
    if (!readable) return;
    if (bytes > left)
        throw std::runtime_error(path + ": it tells far more than it holds; this is not shown");
    left -= bytes;
}

void Store::Impl::load() {
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
            table.layout =
                q.getColumn(4).getString() == "columns"
                    ? Layout(ColumnLayout{{}, q.getColumn(5).getUInt(), q.getColumn(6).getUInt()})
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

store::Table& Store::Impl::table_by_key(std::int64_t key) {
    for (auto& table : tables) {
        if (table->key == key) return *table;
    }
    throw std::runtime_error(path + ": the store names a table that it does not have");
}

store::Table* Store::Impl::find_table(const std::string& id) {
    for (auto& table : tables) {
        if (table->id == id) return table.get();
    }
    return nullptr;
}

Store::Store(const std::string& path, Mode mode) {
    if (mode == Mode::create) create_private(path);
    impl_ = store::with_file_name(path, [&] { return std::make_unique<Impl>(path, mode); });
}

const std::string& Store::uri() const {
    static const std::string none;
    return impl_->readable ? impl_->readable->uri() : none;
}

Store::~Store() = default;
Store::Store(Store&&) noexcept = default;

}  // namespace qvhost
