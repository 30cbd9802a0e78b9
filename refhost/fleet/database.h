// A database that holds a fleet: a SQLite file or a PostgreSQL server, used alike.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "fleet/schema.h"
#include "store/store.h"

namespace qvhost::fleet {

using Row = std::vector<TypedValue>;
using TakeRow = std::function<void(const Row& row)>;

// The connection is gone, and with it what was not committed. reconnect() may bring it back.
struct LostConnection : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Somebody else was in the way. The transaction is gone; the same once more may work.
struct Conflict : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Adds rows to a table, in bulk. Nothing else is asked of the database meanwhile.
class Insertion {
public:
    virtual ~Insertion() = default;
    virtual void add(const Row& row) = 0;
    virtual void finish() = 0;  // without it, nothing is added
};

// All operations throw std::runtime_error with the database's own words.
class Database {
public:
    virtual ~Database() = default;
    virtual Dialect dialect() const = 0;
    virtual void reconnect() = 0;

    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void roll_back() noexcept = 0;

    // Waits until no other transaction has one of these keys; holds them until this one ends. In order.
    virtual void lock(const std::vector<std::int64_t>& keys) = 0;

    virtual void execute(const std::string& sql) = 0;
    // Its places are $1, $2, ..., each of which first occurs in this order.
    virtual void each(const std::string& sql, const Row& values, const TakeRow& take) = 0;
    virtual std::unique_ptr<Insertion> insertion(const std::string& table,
                                                 const std::vector<std::string>& columns) = 0;

    // One statement that only reads, whoever wrote it: its columns first, then its rows, as they come.
    virtual void query(const std::string& sql,
                       const std::function<void(const std::vector<std::string>& names)>& columns,
                       const TakeRow& take) = 0;

    // Whether there is a table or view of that name.
    virtual bool has(const std::string& relation) = 0;
};

// What `place` names: "postgresql://..." or "postgres://...", else a SQLite file. It is made if `may_create`.
std::unique_ptr<Database> open_database(const std::string& place, bool may_create);

// The implementations.
std::unique_ptr<Database> open_sqlite(const std::string& file, bool may_create);
std::unique_ptr<Database> open_postgresql(const std::string& url);

// Rolls back at its end unless committed.
class Transaction {
public:
    explicit Transaction(Database& db) : db_(db) { db_.begin(); }
    ~Transaction() {
        if (!committed_) db_.roll_back();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit() {
        db_.commit();
        committed_ = true;
    }

private:
    Database& db_;
    bool committed_ = false;
};

}  // namespace qvhost::fleet
