// Inventory and events as tables of a store: one a kind of entity, one column a field.
#pragma once

#include <functional>
#include <vector>

#include "inventory/inventory.h"
#include "store/store.h"
#include "store/typed_table.h"

namespace qvhost {

void write_inventory(Store& store, const inventory::Inventory& inventory);

// The tables that write_inventory() and EventWriter write.
std::vector<DeclaredTypedTable> inventory_tables();

// What write_inventory() wrote; lists of observations are empty. From a store of somebody else it is
// what that says, field by field.
inventory::Inventory read_inventory(const Store& store);

// Hands on each event of a store, in their order, until `take` has enough and returns false. One that has no
// severity of ours is "info".
using TakeEvent = std::function<bool(const inventory::Event&)>;
void each_event(const Store& store, const TakeEvent& take);

// The same, with nothing but source, time and text, by which events are told apart.
void each_event_identity(const Store& store, const TakeEvent& take);

// Writes events as they come.
class EventWriter {
public:
    explicit EventWriter(Store& store);
    void add(const inventory::Event& event);

private:
    TypedTableWriter table_;
    std::vector<TypedValue> row_;
};

}  // namespace qvhost
