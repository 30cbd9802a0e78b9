// Imports the journal of a collection into its store.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "journal/journal.h"
#include "store/store.h"

namespace qvhost {

// How far a collection has come, as its journal tells.
struct CollectionState {
    std::vector<std::string> all_modules;  // that are going to be asked, as people know them
    std::vector<std::string> modules;      // those that were asked so far
    std::set<std::string> reached;         // tables
    std::string table;                     // the one being collected; empty: none
    std::string question;             // the tool that the host itself asks now; empty: none yet
    std::vector<std::string> errors;  // what callbacks threw
    std::optional<EndEntry> end;
    std::size_t records = 0;
};

class JournalImporter {
public:
    JournalImporter(JournalReader& journal, Store& store) : journal_(journal), store_(store) {}

    // Takes what is new in the journal, or the first part of it if it is long. Commits if the last
    // commit is half a second ago. False: there was nothing new.
    bool take_new();

    // Notes as the reason of tables that were not reached that the collection ended before.
    void explain_unreached();

    const CollectionState& state() const { return state_; }

private:
    void take(const JournalEntry& entry);

    JournalReader& journal_;
    Store& store_;
    std::map<std::string, std::string> titles_;  // of modules
    std::string module_;
    std::string lacks_;  // what could not be asked, as the store keeps it
    CollectionState state_;
    std::chrono::steady_clock::time_point committed_ = std::chrono::steady_clock::now();
};

}  // namespace qvhost
