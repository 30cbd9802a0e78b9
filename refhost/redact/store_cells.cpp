#include "redact/store_cells.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>
#include <vector>

#include "store/names.h"

namespace qvhost::redact {

bool has_value_in_cells(const std::filesystem::path& store, const SpellingSearch& search) {
    const SQLite::Database db(store.string(), SQLite::OPEN_READONLY);
    SQLite::Statement unused(db, "PRAGMA freelist_count");
    if (!unused.executeStep() || unused.getColumn(0).getInt64() != 0) return true;
    std::vector<std::string> tables{"sqlite_master"};
    SQLite::Statement names(db, "SELECT name FROM sqlite_master WHERE type = 'table'");
    while (names.executeStep()) tables.push_back(names.getColumn(0).getString());
    bool found = false;
    for (const auto& table : tables) {
        SQLite::Statement rows(db, "SELECT * FROM " + store::identifier(table));
        while (!found && rows.executeStep()) {
            for (int i = 0; i < rows.getColumnCount(); ++i) {
                const auto cell = rows.getColumn(i);
                if (!cell.isText() && !cell.isBlob()) continue;
                search.each(cell.getString(), [&](const SpellingSearch::Match&) { found = true; });
            }
        }
    }
    return found;
}

}  // namespace qvhost::redact
