// How entities of two reports are compared: for each kind what says which is which, and how a change of
// each field is told. The engine (entities.h) knows no kind.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "findings/finding.h"

namespace qvhost::compare {

enum class Telling {
    identity,  // another one: replaced. Not known: it could not be read
    place,     // another one: moved. Not known: there is none
    state,     // failed or recovered, as the findings judge it
    counter,   // by how much
    plain,     // from, to. Not known: it could not be read
    setting,   // from, to. Not known: there is none
    if_known,  // from, to, where both are known
    reading,   // moves all the time: told only where it could not be read
    beside,    // moves all the time: told only beside a state that changed
    never,     // told by another field or entity
};

struct FieldRow {
    const char* name;
    Telling telling;
    const char* worse = "failed";  // the word for a state that became worse
};

struct KindRow {
    const char* kind;   // of the table
    const char* title;  // for people: "Drives"
    const char* one;    // "drive"
    // "Drive[ {slot}][, serial {serial}]": a part between brackets goes if a field in it is not known.
    const char* subject;
    // What pairs two entities, tried in this order; the last field of each must be known. Entities of
    // one key are paired in their order; an empty list of fields pairs what is left so.
    std::vector<std::vector<const char*>> keys;
    std::vector<FieldRow> fields;
    const char* presence = "";  // a row whose field of this name is "no" is only a place for one
    // Their `missing` says whether one that is gone could have been read.
    std::vector<findings::Subsystem> subsystems = {};
    bool is_always_there = false;  // no machine is without: if all are gone they were not read
    // Rows with one value of this field are left out if each of them has the serial number of an entity of another
    // kind: they say again what that entity says. "": no row is left out.
    const char* again = "";
    // A report with rows of this kind and none of these did not read them.
    const char* parts_of = "";
};

std::span<const KindRow> kinds();

// The word for a state by the rule of the finding that it causes, where that says more than "failed".
struct RuleWord {
    const char* rule;
    const char* word;
};
std::span<const RuleWord> rule_words();

}  // namespace qvhost::compare
