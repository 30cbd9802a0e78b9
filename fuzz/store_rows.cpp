// A sound SQLite file whose rows are not those of a store: rows of any values are put into a small
// store's tables, which is then shown.
#include <SQLiteCpp/SQLiteCpp.h>

#include <nlohmann/json.hpp>

#include "check.h"
#include "outcome.h"
#include "qvhost/present/report.h"
#include "report/report_json.h"
#include "scratch.h"
#include "sound_store.h"
#include "store/store.h"

using namespace qvhost;

namespace {

struct Target {
    const char* name;
    int columns;
};
constexpr Target kTargets[] = {
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

void bind_any(SQLite::Statement& insert, int place, fuzz::Pieces& input) {
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

void put_rows(const std::string& path, fuzz::Pieces& input) {
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Scratch scratch;
    static const std::string sound = fuzz::sound_store(scratch / "sound.sqlite");
    const std::string path = scratch / "report.sqlite";
    fuzz::write_file(path, sound);
    fuzz::Pieces input(fuzz::text_of(data, size));
    put_rows(path, input);

    const fuzz::Printed shown;
    const auto failure = fuzz::told([&] { show_report({path, {}, false}); });
    fuzz::expect_harmless(shown.text());
    fuzz::expect(failure.empty() || failure.starts_with(path), "a failure names the file");
    std::ostringstream json;
    const auto json_failure =
        fuzz::told([&] { write_report_json(Store(path, Store::Mode::read), json); });
    fuzz::expect(!json_failure.empty() || nlohmann::json::accept(json.str()), "it is JSON");
    return 0;
}
