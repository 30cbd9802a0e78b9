// What the journal of a collection tells, filled into its store.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "journal/journal.h"
#include "store/store.h"

namespace qvhost {

class Collection {
public:
    explicit Collection(Store& store) : store_(store) {}

    void take(JournalEntry&& entry);

    // The table that is being asked for now; empty: none.
    const std::string& module() const { return module_; }
    const std::string& table() const { return table_; }
    std::string module_title() const;

    // Whether the collection was told to be over, and why it could not run if it could not.
    bool ended() const { return end_.has_value(); }
    std::string failure() const { return end_ ? end_->error : ""; }

    // What the callbacks of a table threw; nothing: they did not.
    std::string error_of(const std::string& table) const;
    bool reached(const std::string& table) const { return reached_.contains(table); }

private:
    void take_one(ModuleEntry&& entry);
    void take_one(TableStartEntry&& entry);
    void take_one(Record&& record);
    void take_one(TableEndEntry&& entry);
    void take_one(EndEntry&& entry);

    Store& store_;
    std::map<std::string, std::string> titles_;  // of modules
    std::map<std::string, std::string> errors_;  // of tables
    std::set<std::string> reached_;              // tables
    std::string module_;
    std::string table_;
    std::optional<EndEntry> end_;
};

}  // namespace qvhost
