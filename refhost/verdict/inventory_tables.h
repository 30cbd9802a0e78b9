// Inventory and events as tables of a store: one a kind of entity, one column a field.
#pragma once

#include "inventory/inventory.h"
#include "store/store.h"
#include "store/typed_table.h"

namespace qvhost {

void write_inventory(Store& store, const inventory::Inventory& inventory);

// What write_inventory() wrote; lists of observations are empty. From a store of somebody else it is
// what that says, field by field.
inventory::Inventory read_inventory(const Store& store);

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
