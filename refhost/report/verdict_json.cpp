#include "report/verdict_json.h"

#include <ostream>
#include <utility>
#include <variant>

#include "inventory/fields.h"
#include "report/json_text.h"

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

ordered_json json_of(const findings::Finding& finding) {
    auto evidence = ordered_json::array();
    for (const auto& place : finding.evidence)
        evidence.push_back({
            {"capture", place.capture},
            {"line",    place.line   }
        });
    return {
        {"id",           finding.id                       },
        {"rule",         finding.rule                     },
        {"severity",     word(finding.severity)           },
        {"subsystem",    word(finding.subsystem)          },
        {"subject",      finding.subject                  },
        {"says",         finding.says                     },
        {"time",         json_of_value(finding.time)      },
        {"count",        finding.count                    },
        {"evidence",     std::move(evidence)              },
        {"first_seen",   json_of_value(finding.first_seen)},
        {"growth",       json_of(finding.growth)          },
        {"acknowledged", json_of(finding.acknowledged)    },
    };
}

ordered_json json_of(const std::vector<findings::Finding>& findings) {
    auto all = ordered_json::array();
    for (const auto& one : findings) all.push_back(json_of(one));
    return all;
}

void put_findings(const std::vector<findings::Finding>& findings, std::ostream& out) {
    const char* separator = "[\n";
    for (const auto& one : findings)
        out << std::exchange(separator, ",\n") << json_line(json_of(one));
    out << (findings.empty() ? "[]" : "]");
}

void put_inventory(const inventory::Inventory& inventory, bool may_be_null, std::ostream& out) {
    const char* kind_separator = "{\n";
    inventory::each_kind([&](const auto& kind) {
        out << std::exchange(kind_separator, ",\n") << json_line(kind.name) << ":[";
        const char* separator = "\n";
        for (const auto& entity : inventory.*kind.list) {
            auto json = ordered_json::object();
            for (const auto& field : kind.fields) {
                auto value = std::visit([&](auto member) { return json_of_value(entity.*member); },
                                        field.member);
                if (may_be_null || !value.is_null()) json[field.name] = std::move(value);
            }
            json["capture"] = entity.place.capture;
            json["line"] = entity.place.line;
            out << std::exchange(separator, ",\n") << json_line(json);
        }
        out << ']';
    });
    out << '}';
}

}  // namespace qvhost
