#include "findings/chassis.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "text/case.h"

namespace qvhost::findings {

namespace {

// Which findings tell the same better.
enum class Told {
    by_the_rule,       // a finding of this rule
    in_its_subsystem,  // whatever is wrong there now
    anywhere,          // whatever is wrong with the machine, or was logged
};

// A name, how its state begins, in lower case, and what that means.
struct ChassisRow {
    std::string_view name;
    std::string_view state;
    std::string_view rule;
    Told told;
};
// clang-format off
// ipmitool chassis status
//     Power Overload       : false
//     Cooling/Fan Fault    : true
//     Chassis Intrusion    : inactive
// and ipmiutil's words on supplies: "Redundancy: lost"
constexpr auto kStates = std::to_array<ChassisRow>({
    {"Power Overload",      "true",     "chassis_power",    Told::in_its_subsystem},
    {"Main Power Fault",    "true",     "chassis_power",    Told::in_its_subsystem},
    {"Power Control Fault", "true",     "chassis_power",    Told::in_its_subsystem},
    {"Cooling/Fan Fault",   "true",     "chassis_cooling",  Told::in_its_subsystem},
    {"Drive Fault",         "true",     "drive_bay_fault",  Told::in_its_subsystem},
    {"Chassis Intrusion",   "active",   "intrusion",        Told::by_the_rule     },
    {"Redundancy",          "lost",     "power_redundancy", Told::in_its_subsystem},
    {"Redundancy",          "degraded", "power_redundancy", Told::in_its_subsystem},
});

// ipmiutil's lights
//     System error LED          amber, on
constexpr auto kLights = std::to_array<ChassisRow>({
    {"System error LED", "amber", "system_error_light", Told::anywhere},
    {"System error LED", "red",   "system_error_light", Told::anywhere},
});
// clang-format on

bool is_told(const ChassisRow& row, const Collector& findings) {
    const auto& rule = findings.rule(row.rule);
    switch (row.told) {
        case Told::by_the_rule: return findings.has(rule);
        case Told::in_its_subsystem: return findings.has_state(rule.subsystem);
        case Told::anywhere: return findings.has_any_of_the_machine();
    }
    return false;
}

template <class Table, class States>
void judge_by(const Table& table, const States& states, Collector& findings) {
    std::array<bool, std::tuple_size_v<Table>> told{};
    for (std::size_t i = 0; i < table.size(); ++i) told[i] = is_told(table[i], findings);
    for (const auto& one : states) {
        const auto state = lowered(one.state.value_or(""));
        for (std::size_t i = 0; i < table.size(); ++i) {
            const auto& row = table[i];
            if (told[i] || one.name != row.name || !state.starts_with(row.state)) continue;
            findings.add({"chassis", "Chassis status"}, row.rule,
                         std::string(row.name) + ": " + *one.state, one.place);
        }
    }
}

}  // namespace

void judge_chassis(const inventory::Inventory& inventory, Collector& findings) {
    judge_by(kStates, inventory.chassis_states, findings);
    judge_by(kLights, inventory.leds, findings);
}

}  // namespace qvhost::findings
