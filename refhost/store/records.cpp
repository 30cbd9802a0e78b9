// Reading the records of a store.
#include <map>
#include <utility>

#include "store/impl.h"

namespace qvhost {

using SQLite::Statement;
using store::identifier;

namespace {

// Assigns to the text of the row before, whose memory is mostly large enough.
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

std::vector<Property> read_shape(const SQLite::Database& db, std::int64_t key) {
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

Reader reader_for(const SQLite::Database& db, const store::Table& table, std::int64_t shape) {
    Reader reader{read_shape(db, shape), {}, nullptr};
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

}  // namespace

void Store::Impl::each_record(const Table* only, const std::function<void(const Record&)>& take) {
    // While the store is filled, its last run is only in memory.
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
        // A statement is much larger than the row that asks for it.
        constexpr std::size_t kMostReaders = 256;
        auto known = readers.find(shape);
        if (known == readers.end() && readers.size() >= kMostReaders) readers.clear();
        if (known == readers.end())
            known = readers.emplace(shape, reader_for(db, table, shape)).first;
        auto& reader = known->second;

        record.table = table.id;
        record.name = runs.getColumn(3).getString();
        record.index = runs.getColumn(4).getInt();
        record.properties = reader.properties;
        std::size_t shared = record.table.size() + record.name.size();
        for (const auto& property : record.properties)
            shared += property.id.size() + property.display.size();
        auto& rows = *reader.rows;
        rows.reset();
        rows.bind(1, runs.getColumn(0).getInt64());
        rows.bind(2, runs.getColumn(1).getInt64());
        while (rows.executeStep()) {
            spend(shared);
            for (std::size_t i = 0; i < record.properties.size(); ++i) {
                auto& value = record.properties[i].value;
                if (reader.column[i] >= 0) {
                    const auto column = rows.getColumn(reader.column[i]);
                    spend(static_cast<std::size_t>(column.getBytes()));
                    set_value(value, column);
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

void Store::each_record(const std::function<void(const Record&)>& take) const {
    store::with_file_name(impl_->path, [&] { impl_->each_record(nullptr, take); });
}

void Store::each_record(const std::string& table,
                        const std::function<void(const Record&)>& take) const {
    store::with_file_name(impl_->path, [&] {
        if (const auto* known = impl_->find_table(table)) impl_->each_record(known, take);
    });
}

}  // namespace qvhost
