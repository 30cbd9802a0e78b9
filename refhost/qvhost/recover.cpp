#include "qvhost/recover.h"

#include <filesystem>

#include "qvhost/fill.h"
#include "report/report_json.h"

namespace qvhost {

namespace {

std::size_t records_in(const Store& store) {
    std::size_t records = 0;
    for (const auto& module : store.modules()) {
        for (const auto& table : module.tables) records += static_cast<std::size_t>(table.records);
    }
    return records;
}

}  // namespace

std::string recover(const LogDir& dir) {
    if (!std::filesystem::exists(dir.journal())) return "";
    const bool has_store = std::filesystem::exists(dir.store());
    std::string found;
    {
        Store store(dir.store(), has_store ? Store::Mode::update : Store::Mode::create);
        JournalReader journal(dir.journal());
        Filler filler(journal, store, records_in(store));
        filler.take_new();
        const auto& standing = filler.standing();
        found = "a collection that was broken off";
        if (!standing.table.empty()) found += " while it collected " + standing.table;
        found += ", with " + std::to_string(standing.records) + " records";
        store.set_meta("status", "incomplete: " + found);
        store.commit();
        write_report_json(store, dir.json());
    }
    std::filesystem::remove(dir.journal());
    return found;
}

}  // namespace qvhost
