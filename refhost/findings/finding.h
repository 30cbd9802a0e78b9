// What is wrong with a server, and how each of its subsystems is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "inventory/entities.h"

namespace qvhost::findings {

using inventory::Place;
using inventory::Text;

// From the worst on. `unknown`: nobody can tell; `notice` is shown and colours nothing.
enum class Severity { critical, warning, unknown, notice };
inline constexpr Severity kSeverities[] = {Severity::critical, Severity::warning, Severity::unknown,
                                           Severity::notice};
const char* word(Severity severity);

enum class Subsystem {
    temperature,
    cooling,
    power,
    memory,
    processor,
    storage,
    bmc,
    system,
    collection
};
inline constexpr Subsystem kSubsystems[] = {
    Subsystem::temperature, Subsystem::cooling,   Subsystem::power,
    Subsystem::memory,      Subsystem::processor, Subsystem::storage,
    Subsystem::bmc,         Subsystem::system,    Subsystem::collection};
const char* word(Subsystem subsystem);

// From the worst on. `unknown`: it cannot be told; `absent`: there is evidence that there is none.
enum class HealthWord { critical, warning, unknown, ok, absent };
inline constexpr HealthWord kHealthWords[] = {HealthWord::critical, HealthWord::warning,
                                              HealthWord::unknown, HealthWord::ok,
                                              HealthWord::absent};
const char* word(HealthWord health);

// An entity of the inventory: the list or SQL table that it stands in, and which of its rows it is.
struct EntityRef {
    std::string kind;         // "drives"
    std::int64_t number = 0;  // from 1; the SQL row's rowid
    bool operator==(const EntityRef&) const = default;
};

// That those who look after the server know of it.
struct Acknowledgement {
    std::string until;  // its last day, "2027-01-31"
    std::string by;     // who; empty: not told
    std::string why;    // empty: not told
    bool operator==(const Acknowledgement&) const = default;
};

// "acknowledged by Jane Doe until 2027-01-31: a new drive is ordered"
std::string words_of(const Acknowledgement& acknowledgement);

// A counter that an earlier run read as less.
struct Growth {
    std::string field;  // "media_errors"
    std::int64_t before = 0;
    std::int64_t now = 0;
    std::string since;  // when that run started, UTC
    bool operator==(const Growth&) const = default;
};

// A value that has been the same since an earlier run.
struct Unchanged {
    EntityRef entity;
    std::string field;  // "rebuild_percent"
    std::string since;  // when that run started, UTC
    bool operator==(const Unchanged&) const = default;
};

struct Finding {
    std::string id;    // of rule and entity; stays the same from run to run
    std::string rule;  // its name in the table of rules
    Severity severity = Severity::notice;
    Subsystem subsystem = Subsystem::system;
    std::string subject;  // "Drive 252:1 of controller 0, serial ZA1"
    std::string says;     // "state Offln; SMART alert"
    Text time;            // of an event: the latest one's, by its source's clock
    std::int64_t count = 1;
    std::vector<Place> evidence;
    std::vector<EntityRef> entities = {};  // what it is about, where that is in the inventory
    // Since when it is there: the first of the runs that have it without a gap (UTC, "...Z"), or the event
    // that began it, by its source's clock. Empty: that is not known.
    Text first_seen = {};
    std::vector<Growth> growth = {};  // of what it is about
    // It is then a notice, and `says` tells why.
    std::optional<Acknowledgement> acknowledged = {};
};

struct Health {
    Subsystem subsystem = Subsystem::system;
    HealthWord health = HealthWord::unknown;
    std::vector<std::string> judged_by;  // the captures that `ok` rests on
    std::vector<std::string> missing;    // what `unknown` lacks, in words
};

struct Verdict {
    std::vector<Finding> findings;  // the worst first
    std::vector<Health> health;     // one a subsystem, in their order
    std::string started = {};       // when the collection began, UTC; empty: not known
    // What of the inventory stands still, of the fields in which that says something.
    std::vector<Unchanged> unchanged = {};
};

// Since when the finding is there, where that is not only since this collection, nor its own time; else empty.
std::string since(const Finding& finding, const Verdict& verdict);

}  // namespace qvhost::findings
