#include "qvhost/finish/recover.h"

#include <boost/algorithm/string/join.hpp>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "qvhost/base/declared_tables.h"
#include "qvhost/base/environment.h"
#include "qvhost/finish/finish_report.h"
#include "qvhost/finish/journal_importer.h"
#include "qvhost/finish/lane_files.h"
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
std::string take_journal(JournalImporter& importer, LaneJournal& lane) {
    try {
        while (importer.take_new(lane)) {
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
    auto found = std::string("a collection that was broken off");
    std::vector<unsigned> damaged;  // lanes
    const auto place = dir.report() / "unfinished";
    fs::remove_all(place);
    make_private_directory(place);
    const auto unfinished = place / dir.store().filename();
    {
        Store store(unfinished, Store::Mode::create);
        take_over(dir.store(), store);
        JournalImporter importer(store);
        std::vector<std::string> tables;
        std::size_t records = 0;
        std::string damage;
        std::set<std::string> broken_off;
        for (const unsigned lane : lanes_in(dir)) {
            LaneJournal journal(dir.journal(lane));
            if (const auto wrong = take_journal(importer, journal); !wrong.empty()) {
                damaged.push_back(lane);
                damage += "; " + wrong;
            }
            if (!journal.state.table.empty()) tables.push_back(journal.state.table);
            records += journal.state.records;
            broken_off.merge(journal.state.broken_off());
        }
        if (!tables.empty()) found += " while it collected " + boost::join(tables, " and ");
        found += ", with " + std::to_string(records) + " records" + damage;
        importer.explain_unreached();
        join_lane_logs(dir);
        finish_report(store, dir, {}, {.problem = found, .broken_off = std::move(broken_off)});
    }
    // What belonged to the old store must not lie beside the new one: SQLite would take it for its own.
    for (const char* part : {"-wal", "-shm", "-journal"}) fs::remove(dir.store().string() + part);
    fs::rename(unfinished, dir.store());
    fs::remove_all(place);
    sync_log_dir(dir);
    remove_lane_files(dir, damaged);
    return found;
}

}  // namespace qvhost
