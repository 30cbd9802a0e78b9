// Every field of every entity, declared once: its name, unit and meaning, the tools that tell it, and
// what kind of secret it is. report.json, the store's tables and docs/inventory.md are made of this.
#pragma once

#include <span>
#include <variant>

#include "inventory/entities.h"
#include "inventory/inventory.h"

namespace qvhost::inventory {

// What a field may not be shown as when a report is handed on.
enum class Secret {
    none,
    serial,   // serial numbers, UUIDs, asset tags, WWNs
    network,  // addresses and host names
};

template <class Entity>
using Member = std::variant<Text Entity::*, Integer Entity::*, Real Entity::*, Flag Entity::*,
                            Texts Entity::*>;

template <class Entity>
struct Field {
    const char* name;
    Member<Entity> member;
    const char* unit;     // "" if it has none
    const char* meaning;  // with the values it can have
    const char* source;   // which tools tell it
    Secret secret = Secret::none;
};

// A kind of entity: how its list is called, in report.json and as an SQL table, and what it is.
template <class Entity>
struct Kind {
    const char* name;
    const char* meaning;
    std::vector<Entity> Inventory::*list;
    std::span<const Field<Entity>> fields;
};

template <class Entity>
const Kind<Entity>& kind_of();

// Calls visit(kind) for each kind of entity, in the order of report.json.
template <class Visit>
void each_kind(Visit visit) {
    visit(kind_of<System>());
    visit(kind_of<Processor>());
    visit(kind_of<MemoryModule>());
    visit(kind_of<Bmc>());
    visit(kind_of<Sensor>());
    visit(kind_of<PowerSupply>());
    visit(kind_of<Fru>());
    visit(kind_of<Controller>());
    visit(kind_of<Battery>());
    visit(kind_of<Enclosure>());
    visit(kind_of<Volume>());
    visit(kind_of<Drive>());
    visit(kind_of<VolumeMember>());
}

}  // namespace qvhost::inventory
