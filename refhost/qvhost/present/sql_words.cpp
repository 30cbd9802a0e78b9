#include "qvhost/present/sql_words.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <cctype>
#include <memory>
#include <string_view>
#include <vector>

#include "qvhost/base/nearest.h"
#include "text/case.h"

namespace qvhost {

namespace {

using Names = std::vector<std::string>;

// The first column of what a statement of our own gives.
Names names_from(sqlite3* db, const char* sql, const std::string& argument = "") {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(prepared,
                                                                               sqlite3_finalize);
    if (sqlite3_bind_parameter_count(prepared) > 0)
        sqlite3_bind_text(prepared, 1, argument.c_str(), -1, SQLITE_TRANSIENT);
    Names names;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
        if (const auto* name = sqlite3_column_text(prepared, 0))
            names.emplace_back(reinterpret_cast<const char*>(name));
    }
    return names;
}

// What people ask for; how the store keeps it is not among that.
Names tables_in(sqlite3* db) {
    return names_from(
        db,
        "SELECT name FROM sqlite_schema WHERE type='table' AND "
        "name NOT LIKE 'qv\\_%' ESCAPE '\\' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
        "ORDER BY name");
}

Names words_of(std::string_view sql) {
    Names words;
    bool inside = false;
    for (const char c : sql) {
        const bool is_part = std::isalnum(static_cast<unsigned char>(c)) || c == '_';
        if (is_part && !inside) words.emplace_back();
        if (is_part) words.back() += c;
        inside = is_part;
    }
    return words;
}

bool names_it(const Names& words, const std::string& table) {
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return same_word(word, table); });
}

struct Asked {
    Names tables;
    Names columns;
};

// The tables that the statement names, and their columns.
Asked asked_by(sqlite3* db, std::string_view sql) {
    Asked asked;
    const auto words = words_of(sql);
    for (const auto& table : tables_in(db)) {
        if (!names_it(words, table)) continue;
        asked.tables.push_back(table);
        for (auto& column : names_from(db, "SELECT name FROM pragma_table_info(?)", table))
            asked.columns.push_back(std::move(column));
    }
    return asked;
}

// "drives" of "main.drives", "model" of "d.model".
std::string last_part(const std::string& name) { return name.substr(name.rfind('.') + 1); }

std::string no_table(sqlite3* db, const std::string& name) {
    const auto tables = tables_in(db);
    const auto meant = did_you_mean(last_part(name), tables);
    return "there is no table " + name +
           (meant.empty() ? "; there are " + boost::join(tables, ", ") : meant);
}

std::string no_column(sqlite3* db, const std::string& name, std::string_view sql) {
    const auto asked = asked_by(db, sql);
    const auto column = last_part(name);
    const auto meant = did_you_mean(column, asked.columns);
    // The column is there: what stands before its name is no table of the statement.
    if (std::find(asked.columns.begin(), asked.columns.end(), column) != asked.columns.end())
        return "there is no column " + name + "; is " + name.substr(0, name.rfind('.')) +
               " a table of the statement?";
    if (!meant.empty()) return "there is no column " + name + meant;
    return "there is no column " + name +
           (asked.columns.empty() ? ""
                                  : "; " + boost::join(asked.tables, " and ") +
                                        (asked.tables.size() == 1 ? " has " : " have ") +
                                        boost::join(asked.columns, ", "));
}

// The name behind "no such table: "; empty: SQLite says something else.
std::string behind(std::string_view told, std::string_view words) {
    return told.starts_with(words) ? std::string(told.substr(words.size())) : "";
}

}  // namespace

std::string sql_words(sqlite3* db, const char* sql) {
    constexpr std::size_t kMaxShownBytes = 40;
    const std::string told = sqlite3_errmsg(db);
    const int offset = sqlite3_error_offset(db);
    const auto place = offset < 0 ? "" : std::string(sql + offset).substr(0, kMaxShownBytes);
    if (const auto name = behind(told, "no such table: "); !name.empty())
        return "SQL: " + no_table(db, name);
    if (const auto name = behind(told, "no such column: "); !name.empty())
        return "SQL: " + no_column(db, name, sql);
    if (const auto name = behind(told, "no such function: "); !name.empty())
        return "SQL: there is no function " + name;
    if (told == "incomplete input") return "SQL: the statement ends too early";
    const bool is_syntax =
        told.ends_with(": syntax error") || told.starts_with("unrecognized token");
    if (is_syntax && !place.empty()) return "SQL: not understood from here on: " + place;
    return "SQL: " + told + (place.empty() ? "" : ", at: " + place);
}

}  // namespace qvhost
