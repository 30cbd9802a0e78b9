#include "report/verdict_json.h"

#include <variant>

#include "inventory/fields.h"

namespace qvhost {

namespace {

using nlohmann::ordered_json;

template <class Value>
ordered_json json_of_value(const std::optional<Value>& value) {
    return value ? ordered_json(*value) : ordered_json(nullptr);
}

ordered_json json_of_value(const inventory::Texts& texts) { return texts; }

// Null: nobody has acknowledged it.
ordered_json json_of(const std::optional<findings::Acknowledgement>& known) {
    if (!known) return nullptr;
    const auto told = [](const std::string& text) {
        return text.empty() ? ordered_json(nullptr) : ordered_json(text);
    };
    return {
        {"until", known->until    },
        {"by",    told(known->by) },
        {"why",   told(known->why)},
    };
}

ordered_json json_of(const std::vector<findings::Growth>& growth) {
    auto all = ordered_json::array();
    for (const auto& one : growth)
        all.push_back({
            {"field",        one.field },
            {"value_before", one.before},
            {"value_now",    one.now   },
            {"since",        one.since },
        });
    return all;
}

}  // namespace

ordered_json json_of(const std::vector<findings::Health>& health) {
    auto all = ordered_json::array();
    for (const auto& one : health) {
        all.push_back({
            {"subsystem", word(one.subsystem)},
            {"health",    word(one.health)   },
            {"judged_by", one.judged_by      },
            {"missing",   one.missing        },
        });
    }
    return all;
}

ordered_json json_of(const std::vector<findings::Finding>& findings) {
    auto all = ordered_json::array();
    for (const auto& one : findings) {
        auto evidence = ordered_json::array();
        for (const auto& place : one.evidence)
            evidence.push_back({
                {"capture", place.capture},
                {"line",    place.line   }
            });
        all.push_back({
            {"id",           one.id                       },
            {"rule",         one.rule                     },
            {"severity",     word(one.severity)           },
            {"subsystem",    word(one.subsystem)          },
            {"subject",      one.subject                  },
            {"says",         one.says                     },
            {"time",         json_of_value(one.time)      },
            {"count",        one.count                    },
            {"evidence",     std::move(evidence)          },
            {"first_seen",   json_of_value(one.first_seen)},
            {"growth",       json_of(one.growth)          },
            {"acknowledged", json_of(one.acknowledged)    },
        });
    }
    return all;
}

ordered_json json_of(const inventory::Inventory& inventory) {
    auto all = ordered_json::object();
    inventory::each_kind([&](const auto& kind) {
        auto list = ordered_json::array();
        for (const auto& entity : inventory.*kind.list) {
            auto json = ordered_json::object();
            for (const auto& field : kind.fields)
                json[field.name] = std::visit(
                    [&](auto member) { return json_of_value(entity.*member); }, field.member);
            json["capture"] = entity.place.capture;
            json["line"] = entity.place.line;
            list.push_back(std::move(json));
        }
        all[kind.name] = std::move(list);
    });
    return all;
}

}  // namespace qvhost
