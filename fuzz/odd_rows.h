// Rows of any values in the tables of a small store.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <iterator>
#include <string>

#include "check.h"

namespace fuzz {

struct Target {
    const char* name;
    int columns;
};
inline constexpr Target kTargets[] = {
    {"qv_meta",   2},
    {"qv_module", 3},
    {"qv_table",  9},
    {"qv_header", 4},
    {"qv_column", 3},
    {"qv_shape",  4},
    {"qv_run",    6},
    {"qv_extra",  3},
    {"T",         3}
};

inline void bind_any(SQLite::Statement& insert, int place, Pieces& input) {
    static const char* const kStock[] = {"T", "U", "a", "b", "columns", "rows", "qv_run"};
    const auto kind = input.byte();
    switch (kind % 6) {
        case 0: insert.bind(place); break;
        case 1: insert.bind(place, static_cast<int>(input.byte())); break;
        case 2: insert.bind(place, static_cast<int64_t>(input.number()) << (kind & 32)); break;
        case 3: insert.bind(place, kStock[input.byte() % std::size(kStock)]); break;
        case 4: insert.bind(place, std::string(input.take(kind / 6))); break;
        default: insert.bind(place, input.number() / 3.0);
    }
}

// Until the input is at its end.
inline void put_rows(const std::string& path, Pieces& input) {
    SQLite::Database db(path, SQLite::OPEN_READWRITE);
    db.exec("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; BEGIN");
    while (!input.at_end()) {
        const auto& [name, columns] = kTargets[input.byte() % std::size(kTargets)];
        std::string places = "?";
        for (int i = 1; i < columns; ++i) places += ",?";
        SQLite::Statement insert(
            db, "INSERT OR REPLACE INTO " + std::string(name) + " VALUES(" + places + ")");
        for (int i = 1; i <= columns; ++i) bind_any(insert, i, input);
        insert.tryExecuteStep();  // a value that the column cannot hold is no row
    }
    db.exec("COMMIT");
}

}  // namespace fuzz
