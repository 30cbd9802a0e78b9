// What is wrong with somebody's SQL, with the nearest table or column.
#pragma once

#include <sqlite3.h>

#include <string>

namespace qvhost {

// What SQLite has just said of the statement that begins at `sql`.
std::string sql_words(sqlite3* db, const char* sql);

}  // namespace qvhost
