#include "qvhost/finish/recover.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "qvhost/base/ambient.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/finish/finish_report.h"
#include "qvhost/finish/journal_importer.h"
#include "store/declared_table.h"
#include "store/store.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

// What only the store tells that was left: when the collection began, on which machine, ... All else is in
// the journal. The store is read as one of a stranger's, and is not used again.
void take_over(const fs::path& left, Store& store) {
    std::vector<DeclaredTable> declared;
    try {
        const Store old(left, Store::Mode::read);
        for (const auto& [key, value] : old.all_meta()) store.set_meta(key, value);
        declared = declared_tables(old);
    } catch (const std::runtime_error&) {
        // It is missing or damaged.
    }
    if (declared.empty()) declared = tables_declared_by(installed_plugin()).tables;
    write_declared_tables(store, declared);
}

// Takes what can be read of the journal. Returns what is wrong with it.
std::string take_journal(JournalImporter& importer) {
    try {
        while (importer.take_new()) {
        }
        return "";
    } catch (const std::system_error&) {
        throw;  // the journal may be whole and can be read another time
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

}  // namespace

std::string recover(const LogDir& dir) {
    if (!fs::exists(dir.journal())) return "";
    std::string found;
    bool damaged = false;
    const auto place = dir.report() / "unfinished";
    fs::remove_all(place);
    make_private_directory(place);
    const auto unfinished = place / dir.store().filename();
    {
        Store store(unfinished, Store::Mode::create);
        take_over(dir.store(), store);
        JournalReader journal(dir.journal());
        JournalImporter importer(journal, store);
        const auto damage = take_journal(importer);
        const auto& state = importer.state();
        found = "a collection that was broken off";
        if (!state.table.empty()) found += " while it collected " + state.table;
        found += ", with " + std::to_string(state.records) + " records";
        damaged = !damage.empty();
        if (damaged) found += "; " + damage;
        importer.explain_unreached();
        finish_report(store, dir, {}, {.problem = found});
    }
    // What belonged to the old store must not lie beside the new one: SQLite would take it for its own.
    for (const char* part : {"-wal", "-shm", "-journal"}) fs::remove(dir.store().string() + part);
    fs::rename(unfinished, dir.store());
    fs::remove_all(place);
    sync_log_dir(dir);
    fs::remove(dir.commands());
    if (damaged) {
        fs::rename(dir.journal(), dir.journal().string() + ".damaged");
    } else {
        fs::remove(dir.journal());
    }
    return found;
}

}  // namespace qvhost
