#include "qvhost/finish/recover.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "qvhost/base/ambient.h"
#include "qvhost/base/declared_tables.h"
#include "qvhost/finish/finish_report.h"
#include "qvhost/finish/journal_importer.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

std::size_t records_in(const Store& store) {
    std::size_t records = 0;
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) records += static_cast<std::size_t>(table.records);
    }
    return records;
}

// The store as it was left. A damaged one is replaced by an empty one: the journal has everything.
Store open_store(const LogDir& dir) {
    if (fs::exists(dir.store())) {
        try {
            return {dir.store(), Store::Mode::update};
        } catch (const std::runtime_error&) {
            for (const char* part : {"", "-wal", "-shm", "-journal"})
                fs::remove(dir.store().string() + part);
        }
    }
    Store store(dir.store(), Store::Mode::create);
    write_declared_tables(store, tables_declared_by(installed_plugin()).tables);
    return store;
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
    {
        auto store = open_store(dir);
        JournalReader journal(dir.journal());
        JournalImporter importer(journal, store, records_in(store));
        const auto damage = take_journal(importer);
        const auto& state = importer.state();
        found = "a collection that was broken off";
        if (!state.table.empty()) found += " while it collected " + state.table;
        found += ", with " + std::to_string(records_in(store)) + " records";
        damaged = !damage.empty();
        if (damaged) found += "; " + damage;
        importer.explain_unreached();
        store.set_status(found);
        finish_report(store, dir, program_file().parent_path() / "qv_tools",
                      std::filesystem::file_time_type::min());
    }
    fs::remove(dir.commands());
    if (damaged) {
        fs::rename(dir.journal(), dir.journal().string() + ".damaged");
    } else {
        fs::remove(dir.journal());
    }
    return found;
}

}  // namespace qvhost
