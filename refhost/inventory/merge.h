// Completes one entity by another of the same thing.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "inventory/fields.h"

namespace qvhost::inventory {

// Fields that `into` does not tell are taken from `from`; nothing that it tells is changed.
template <class Entity>
void complete(Entity& into, const Entity& from) {
    for (const auto& field : kind_of<Entity>().fields) {
        std::visit(
            [&](auto member) {
                using Value = std::remove_reference_t<decltype(into.*member)>;
                if constexpr (std::is_same_v<Value, Texts>) {
                    if ((into.*member).empty()) into.*member = from.*member;
                } else {
                    if (!(into.*member)) into.*member = from.*member;
                }
            },
            field.member);
    }
}

// All entities as one, the earlier ones going before; none stays none.
template <class Entity>
void merge_all(std::vector<Entity>& entities) {
    for (std::size_t i = 1; i < entities.size(); ++i) complete(entities[0], entities[i]);
    if (entities.size() > 1) entities.erase(entities.begin() + 1, entities.end());
}

// Where several captures list the same things, those of the longest list, or of the first of equals.
template <class Entity>
void keep_one_list(std::vector<Entity>& entities) {
    std::vector<std::string> captures;
    std::map<std::string, std::size_t> counts;
    for (const auto& entity : entities) {
        if (counts[entity.place.capture]++ == 0) captures.push_back(entity.place.capture);
    }
    if (captures.size() < 2) return;
    const auto longest =
        *std::max_element(captures.begin(), captures.end(),
                          [&](const auto& a, const auto& b) { return counts[a] < counts[b]; });
    std::erase_if(entities, [&](const Entity& e) { return e.place.capture != longest; });
}

}  // namespace qvhost::inventory
