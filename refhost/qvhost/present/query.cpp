#include "qvhost/present/query.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "qvhost/present/open_report.h"
#include "qvhost/present/sql_words.h"
#include "rows/row_printer.h"
#include "show/terminal.h"
#include "store/sqlite_words.h"

namespace qvhost {

namespace {

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

// The pragmas that only tell something about the schema and the file, and change nothing.
constexpr const char* kTellingPragmas[] = {
    "compile_options", "database_list", "foreign_key_list", "function_list", "index_info",
    "index_list",      "index_xinfo",   "integrity_check",  "pragma_list",   "quick_check",
    "table_info",      "table_list",    "table_xinfo",
};
// These are refused when they get a value, which would set them.
constexpr const char* kFilePragmas[] = {"application_id", "encoding", "page_count", "page_size",
                                        "user_version"};

// Functions that load code or take addresses.
constexpr const char* kRefusedFunctions[] = {"fts3_tokenizer", "load_extension"};

constexpr const char* kSchemaTables[] = {"sqlite_master", "sqlite_temp_master"};

template <class Names>
bool is_one_of(const Names& names, const char* name) {
    return name && std::any_of(std::begin(names), std::end(names),
                               [&](const char* one) { return sqlite3_stricmp(one, name) == 0; });
}

// The first forbidden thing that a statement would do.
struct Refusal {
    bool happened = false;
    std::string what;  // if the statement's first word does not tell
};

// SQLite calls this for each thing that a statement would do.
int authorize(void* refusal, int action, const char* first, const char* second, const char*,
              const char*) {
    auto& refused = *static_cast<Refusal*>(refusal);
    const auto refuse = [&](const std::string& name) {
        if (!refused.happened) refused = {true, name};
        return SQLITE_DENY;
    };
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_RECURSIVE: return SQLITE_OK;
        case SQLITE_FUNCTION:
            return is_one_of(kRefusedFunctions, second) ? refuse(second + std::string("()"))
                                                        : SQLITE_OK;
        case SQLITE_PRAGMA:
            if (is_one_of(kTellingPragmas, first)) return SQLITE_OK;
            if (is_one_of(kFilePragmas, first) && !second) return SQLITE_OK;
            return refuse(std::string("PRAGMA ") + first);
        case SQLITE_INSERT:
        case SQLITE_UPDATE:
            // SQLite declares its own virtual tables (pragma_table_info, json_each) so. Statements
            // cannot change this table, and what they create or drop is asked for by its name.
            return is_one_of(kSchemaTables, first) ? SQLITE_OK : refuse("");
        default: return refuse("");
    }
}

Database open_database(const Report& report) {
    sqlite3* opened = nullptr;
    const int status = sqlite3_open_v2(report.store.uri().c_str(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    Database db(opened, sqlite3_close);
    if (status != SQLITE_OK)
        throw std::runtime_error(report.file.string() + ": " +
                                 store::sqlite_words(status, sqlite3_errmsg(opened)));
    // The file may come from anywhere: views in it get no more rights than the statement has.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
    // A column that does not exist is an error, also between double quotes.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_exec(opened, "PRAGMA query_only=ON", nullptr, nullptr, nullptr);
    return db;
}

// The first word: what the statement does, for people.
std::string verb(std::string_view sql) {
    std::string word;
    for (const char c : sql.substr(std::min(sql.size(), sql.find_first_not_of(" \t\r\n")))) {
        if ((c < 'a' || c > 'z') && (c < 'A' || c > 'Z')) break;
        word += c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return word;
}

[[noreturn]] void refuse(const std::string& what) {
    throw std::runtime_error("a report is only read: " + (what.empty() ? "this" : what) +
                             " is refused");
}

// Whether behind the statement there is nothing but blanks and comments.
bool is_alone(sqlite3* db, const char* rest) {
    while (*rest) {
        sqlite3_stmt* next = nullptr;
        const char* const before = rest;
        const int status = sqlite3_prepare_v2(db, rest, -1, &next, &rest);
        const Statement statement(next, sqlite3_finalize);
        if (status != SQLITE_OK || next || rest == before) return false;
    }
    return true;
}

Statement prepare(sqlite3* db, const std::string& sql, const Refusal& refusal) {
    const char* text = sql.c_str();
    Statement statement(nullptr, sqlite3_finalize);
    while (!statement && *text) {
        sqlite3_stmt* prepared = nullptr;
        const char* rest = nullptr;
        const int status = sqlite3_prepare_v2(db, text, -1, &prepared, &rest);
        statement.reset(prepared);
        if (refusal.happened) refuse(refusal.what.empty() ? verb(text) : refusal.what);
        if (status != SQLITE_OK) throw std::runtime_error(sql_words(db, text));
        if (prepared && !sqlite3_stmt_readonly(prepared)) refuse(verb(text));
        text = rest;
    }
    if (!statement) throw std::runtime_error("SQL: the statement is empty");
    if (!is_alone(db, text))
        throw std::runtime_error("SQL: more than one statement; one at a time, please");
    return statement;
}

Cell cell_of(sqlite3_stmt* statement, int column) {
    Cell cell;
    const int type = sqlite3_column_type(statement, column);
    switch (type) {
        case SQLITE_NULL: return cell;
        case SQLITE_INTEGER: cell.kind = Cell::Kind::integer; break;
        case SQLITE_FLOAT: cell.kind = Cell::Kind::real; break;
        case SQLITE_BLOB: cell.kind = Cell::Kind::blob; break;
        default: cell.kind = Cell::Kind::text; break;
    }
    if (type == SQLITE_FLOAT) cell.real = sqlite3_column_double(statement, column);
    const void* const bytes = type == SQLITE_BLOB ? sqlite3_column_blob(statement, column)
                                                  : sqlite3_column_text(statement, column);
    if (bytes)
        cell.text = {static_cast<const char*>(bytes),
                     static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    return cell;
}

}  // namespace

void query_report(const QueryOptions& options) {
    const auto report = open_report(options.report);
    const auto db = open_database(report);
    Refusal refusal;
    sqlite3_set_authorizer(db.get(), authorize, &refusal);
    const auto statement = prepare(db.get(), options.sql, refusal);

    const int count = sqlite3_column_count(statement.get());
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) names.emplace_back(sqlite3_column_name(statement.get(), i));
    const auto printer =
        row_printer(std::cout, {options.format, options.raw, terminal_style(STDOUT_FILENO)}, names);

    std::vector<Cell> cells(names.size());
    int status = 0;
    while ((status = sqlite3_step(statement.get())) == SQLITE_ROW) {
        for (int i = 0; i < count; ++i)
            cells[static_cast<std::size_t>(i)] = cell_of(statement.get(), i);
        printer->row(cells);
    }
    // Functions such as pragma_table_info() prepare statements of their own while they run.
    if (refusal.happened) refuse(refusal.what);
    if (status != SQLITE_DONE)
        throw std::runtime_error("SQL: " + store::sqlite_words(status, sqlite3_errmsg(db.get())));
    printer->end();
}

}  // namespace qvhost
