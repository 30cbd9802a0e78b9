// Compares two tables of one kind: pairs the entities by what they are, and tells what became of each.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "compare/kinds.h"
#include "compare/table.h"

namespace qvhost::compare {

enum class Trend { none, worse, better };

struct FieldChange {
    std::string field;
    Value from, to;
    std::string unit = {};
    // Of a counter: by how much it grew, negative if it fell.
    Value by = {};
};

// What became of one entity.
struct Change {
    std::string kind;     // "drives"
    std::string subject;  // "Drive 252:1 of controller 0, serial ZA1"
    std::string what;     // replaced, failed, recovered, added, removed, moved, changed, ...
    Trend trend = Trend::none;
    std::vector<FieldChange> fields;
    findings::Place from, to;  // where it stands in each report; an empty capture: in none
};

// A field that one report tells and the other does not, or (no field) entities that could not be read.
struct Unread {
    std::string kind;
    std::string field;
    std::vector<std::string> subjects;
    bool operator==(const Unread&) const = default;
};

struct EntityDifference {
    std::vector<Change> changes;
    std::vector<Unread> not_now, not_then;
};

// Whether an entity that stands in a table alone could have been read by the other report.
using CouldBeRead = std::function<bool(const KindRow& kind, const Row& row)>;

EntityDifference compare_entities(const KindRow& kind, const Table& from, const Table& to,
                                  const CouldBeRead& by_old, const CouldBeRead& by_new);

// What the kind's pattern makes of a row. Fields that are identities may be left out, since they are told
// apart where an entity was replaced.
enum class Identities { named, left_out };
std::string subject_of(const KindRow& kind, const Table& table, const Row& row,
                       Identities identities = Identities::named);

}  // namespace qvhost::compare
