#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "fleet/database.h"
#include "store/sqlite_words.h"
#include "store/statement.h"

namespace qvhost::fleet {

namespace {

using SQLite::Statement;

constexpr int kWaitMilliseconds = 600'000;  // for another program that writes

class SqliteInsertion : public Insertion {
public:
    explicit SqliteInsertion(Statement& statement) : statement_(statement) {}
    void add(const Row& row) override {
        store::bind_row(statement_, row);
        statement_.exec();
    }
    void finish() override {}

private:
    Statement& statement_;
};

class SqliteDatabase : public Database {
public:
    SqliteDatabase(const std::string& file, bool may_create)
        : file_(file), db_(opened(file, may_create)) {
        with_words([&] {
            db_.setBusyTimeout(kWaitMilliseconds);
            db_.exec("PRAGMA cache_size=-65536");
        });
    }

    Dialect dialect() const override { return Dialect::sqlite; }
    void reconnect() override {}

    void begin() override { execute("BEGIN IMMEDIATE"); }
    void commit() override { execute("COMMIT"); }
    void roll_back() noexcept override {
        sqlite3_exec(db_.getHandle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
    void lock(const std::vector<std::int64_t>&) override {}  // begin() has locked the whole file

    void execute(const std::string& sql) override {
        with_words([&] { db_.exec(sql); });
    }

    void each(const std::string& sql, const Row& values, const TakeRow& take) override {
        with_words([&] {
            Statement statement(db_, sql);
            store::bind_row(statement, values);
            for (Row row; statement.executeStep();) {
                store::take_row(statement, row);
                take(row);
            }
        });
    }

    std::unique_ptr<Insertion> insertion(const std::string& table,
                                         const std::vector<std::string>& columns) override {
        std::string names;
        std::string places;
        for (const auto& column : columns) {
            names += (names.empty() ? "" : ", ") + column;
            places += places.empty() ? "?" : ",?";
        }
        const auto sql = "INSERT INTO " + table + "(" + names + ") VALUES (" + places + ")";
        return with_words([&] {
            auto& statement = insertions_[sql];
            if (!statement) statement = std::make_unique<Statement>(db_, sql);
            return std::make_unique<SqliteInsertion>(*statement);
        });
    }

    void query(const std::string& sql,
               const std::function<void(const std::vector<std::string>& names)>& columns,
               const TakeRow& take) override {
        with_words([&] {
            SQLite::Database db(file_, SQLite::OPEN_READONLY);
            db.setBusyTimeout(kWaitMilliseconds);
            sqlite3_limit(db.getHandle(), SQLITE_LIMIT_ATTACHED, 0);
            sqlite3_db_config(db.getHandle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
            sqlite3_db_config(db.getHandle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
            expect_one(db.getHandle(), sql);
            Statement statement(db, sql);
            std::vector<std::string> names;
            for (int i = 0; i < statement.getColumnCount(); ++i)
                names.emplace_back(statement.getColumnName(i));
            columns(names);
            for (Row row; statement.executeStep();) {
                store::take_row(statement, row);
                take(row);
            }
        });
    }

    bool has(const std::string& relation) override {
        return with_words([&] {
            Statement statement(db_, "SELECT 1 FROM sqlite_master WHERE name = ?");
            statement.bind(1, relation);
            return statement.executeStep();
        });
    }

private:
    static SQLite::Database opened(const std::string& file, bool may_create) {
        std::error_code error;
        if (!may_create && !std::filesystem::exists(file, error))
            throw std::runtime_error(file + ": there is no such database");
        try {
            return {file, SQLite::OPEN_READWRITE | SQLite::OPEN_NOMUTEX |
                              (may_create ? SQLite::OPEN_CREATE : 0)};
        } catch (const SQLite::Exception& failure) {
            throw std::runtime_error(file + ": " +
                                     store::sqlite_words(failure.getErrorCode(), failure.what()));
        }
    }

    // Behind a statement there is nothing but blanks and comments.
    static void expect_one(sqlite3* db, const std::string& sql) {
        int statements = 0;
        for (const char* text = sql.c_str(); *text;) {
            sqlite3_stmt* made = nullptr;
            const char* const before = text;
            const bool is_sound = sqlite3_prepare_v2(db, text, -1, &made, &text) == SQLITE_OK;
            if (made || !is_sound) ++statements;
            sqlite3_finalize(made);
            if (!is_sound || text == before) break;
        }
        if (statements != 1) throw std::runtime_error("one SQL statement at a time, please");
    }

    template <class Work>
    auto with_words(Work work) -> decltype(work()) {
        try {
            return work();
        } catch (const SQLite::Exception& failure) {
            const auto words = file_ + ": " + failure.what();
            if (failure.getErrorCode() == SQLITE_BUSY) throw Conflict(words);
            throw std::runtime_error(words);
        }
    }

    std::string file_;
    SQLite::Database db_;
    std::map<std::string, std::unique_ptr<Statement>> insertions_;
};

}  // namespace

std::unique_ptr<Database> open_sqlite(const std::string& file, bool may_create) {
    return std::make_unique<SqliteDatabase>(file, may_create);
}

std::unique_ptr<Database> open_database(const std::string& place, bool may_create) {
    for (const auto* const scheme : {"postgresql://", "postgres://"}) {
        if (place.starts_with(scheme)) return open_postgresql(place);
    }
    return open_sqlite(place, may_create);
}

}  // namespace qvhost::fleet
