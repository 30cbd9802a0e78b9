#include "compare/growth.h"

#include <algorithm>
#include <cstdint>
#include <variant>

#include "inventory/fields.h"

namespace qvhost::compare {

namespace {

// The entity that stands there; its number is 0 if there is none.
findings::EntityRef entity_at(const inventory::Inventory& inventory, const std::string& kind,
                              const findings::Place& place) {
    findings::EntityRef found{kind, 0};
    inventory::each_kind([&](const auto& one) {
        const auto& list = inventory.*one.list;
        if (kind != one.name) return;
        const auto entity = std::find_if(list.begin(), list.end(), [&](const auto& candidate) {
            return candidate.place == place;
        });
        if (entity != list.end()) found.number = entity - list.begin() + 1;
    });
    return found;
}

}  // namespace

std::vector<findings::GrownCounter> grown_counters(const Side& from, const Side& to) {
    std::vector<findings::GrownCounter> grown;
    const auto difference = compare(from, to);
    if (difference.machines == Machines::two) return grown;
    for (const auto& change : difference.changes) {
        for (const auto& field : change.fields) {
            const auto* const by = std::get_if<std::int64_t>(&field.by);
            const auto* const before = std::get_if<std::int64_t>(&field.from);
            const auto* const now = std::get_if<std::int64_t>(&field.to);
            if (!by || !before || !now || *by <= 0) continue;
            const auto entity = entity_at(to.inventory, change.kind, change.to);
            if (entity.number > 0)
                grown.push_back({
                    entity, {field.field, *before, *now, from.collection.started}
                });
        }
    }
    return grown;
}

}  // namespace qvhost::compare
