// Rows of values in and out of SQLite's statements.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <vector>

#include "store/store.h"

namespace qvhost::store {

// Makes the statement ready to run with a value for each of its places. Texts are not copied: the row has to live
// until it has run.
void bind_row(SQLite::Statement& statement, const std::vector<TypedValue>& row);

// The row that the statement stands on, with values as they are stored.
void take_row(SQLite::Statement& statement, std::vector<TypedValue>& row);

}  // namespace qvhost::store
