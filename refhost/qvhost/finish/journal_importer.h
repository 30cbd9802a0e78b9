// Imports the journals of a collection into its store.
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

// How far a lane of a collection has come, as its journal tells.
struct CollectionState {
    std::vector<std::string> modules;  // those that were asked so far, as people know them
    std::string table;                 // the one being collected; empty: none
    bool modules_ended = false;        // no record follows
    bool device_is_left = false;       // as ModulesEndEntry has it
    std::string question;              // the tool that the host itself asks now; empty: none yet
    std::vector<std::string> errors;   // what callbacks threw
    std::set<std::string> threw;       // modules, by name
    std::string module;                // by name, the one that is asked now; empty: none
    std::optional<EndEntry> end;
    std::size_t records = 0;

    void take(const JournalEntry& entry);

    // If nothing follows: what ended before its time, modules by name, operations of --also as kAlsoMark.
    std::set<std::string> broken_off() const;

private:
    std::map<std::string, ModuleEntry> known_;
};

// A journal, and what it has told so far.
struct LaneJournal {
    explicit LaneJournal(const std::string& path) : reader(path) {}

    // Takes what is new in it, or the first part of that if it is long; no record gets anywhere. False: there was
    // nothing new.
    bool follow();

    JournalReader reader;
    CollectionState state = {};
};

class JournalImporter {
public:
    explicit JournalImporter(Store& store) : store_(store) {}

    // Takes what is new in the journal, or the first part of it if it is long. Commits if the last
    // commit is half a second ago. False: there was nothing new. Records are in the store in the order in
    // which they were taken: the journal of a lane is taken when those before it have no further ones.
    bool take_new(LaneJournal& lane);

    // Notes as the reason of tables that were not reached that the collection ended before.
    void explain_unreached();

private:
    void take(const JournalEntry& entry);

    Store& store_;
    std::set<std::string> reached_;  // tables
    std::string lacks_;              // what could not be asked, as the store keeps it
    std::chrono::steady_clock::time_point committed_ = std::chrono::steady_clock::now();
};

}  // namespace qvhost
