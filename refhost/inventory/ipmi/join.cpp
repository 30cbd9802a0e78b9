#include "inventory/ipmi/join.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "inventory/ipmi/power_supply_name.h"
#include "inventory/ipmi/power_supply_states.h"
#include "inventory/merge.h"

namespace qvhost::inventory {

namespace {

// Which sensor of a capture an entry is: the n-th of its name.
class Occurrences {
public:
    std::pair<std::string, int> next(const Sensor& sensor) {
        const auto name = sensor.name.value_or("");
        return {name, counts_[{sensor.place.capture, name}]++};
    }

private:
    std::map<std::pair<std::string, std::string>, int> counts_;
};

// A sensor without a reading now had one when the other capture was taken, or never has one.
bool is_unread(const Sensor& sensor) {
    return !sensor.reading && (!sensor.status || *sensor.status == "na" || *sensor.status == "ns");
}

bool is_discrete(const Sensor& sensor) { return sensor.kind && *sensor.kind == "discrete"; }

void join_sensor(Sensor& sensor, const Sensor& other) {
    // What `sensor` prints as the status of a discrete sensor is its bits.
    const bool has_bits = sensor.status && sensor.status->starts_with("0x");
    const bool takes_status = (has_bits && is_discrete(other)) ||
                              (is_unread(sensor) && other.reading && !is_discrete(sensor));
    if (takes_status && other.status) sensor.status = other.status;
    if (sensor.states.empty() && !other.states.empty())
        sensor.elsewhere.push_back({"states", other.place});
    complete(sensor, other);
}

using ByName = std::map<std::pair<std::string, int>, std::size_t>;

// Sensors of the captures of one kind become one list; new ones go to its end.
void join_lists(std::vector<Sensor>& into, std::vector<Sensor> from, bool adds) {
    ByName known;
    Occurrences seen;
    for (std::size_t i = 0; i < into.size(); ++i) known.emplace(seen.next(into[i]), i);
    Occurrences others;
    for (auto& other : from) {
        const auto [at, is_new] = known.try_emplace(others.next(other), into.size());
        if (!is_new)
            join_sensor(into[at->second], other);
        else if (adds)
            into.push_back(std::move(other));
        else
            known.erase(at);
    }
}

using SensorsOf = std::map<std::string, std::vector<const Sensor*>>;  // by capture

// One list is the beginning of the other: it was cut off behind a line.
std::vector<CaptureGap> lists_cut_off(const Inventory& found) {
    SensorsOf captures;
    for (const auto* const list : {&found.sensors, &found.sdr_sensors})
        for (const auto& sensor : *list) captures[sensor.place.capture].push_back(&sensor);
    std::vector<CaptureGap> gaps;
    for (const auto& [name, sensors] : captures) {
        for (const auto& [other_name, others] : captures) {
            const bool is_beginning =
                sensors.size() < others.size() &&
                std::equal(sensors.begin(), sensors.end(), others.begin(),
                           [](const Sensor* a, const Sensor* b) { return a->name == b->name; });
            if (!is_beginning) continue;
            gaps.push_back({
                name,
                {sensors.back()->place.line, std::to_string(sensors.size()) + " of the " +
                                                 std::to_string(others.size()) + " sensors that " +
                                                 other_name + " lists"}
            });
            break;
        }
    }
    return gaps;
}

std::vector<Sensor> one_list(std::vector<Sensor> all) {
    std::vector<Sensor> first;
    std::vector<Sensor> others;
    for (auto& sensor : all) {
        const bool is_first = first.empty() || sensor.place.capture == first.front().place.capture;
        (is_first ? first : others).push_back(std::move(sensor));
    }
    join_lists(first, std::move(others), true);
    return first;
}

void join_sensors(Inventory& found) {
    found.sensors = one_list(std::move(found.sensors));
    join_lists(found.sensors, one_list(std::move(found.sdr_sensors)), true);
    join_lists(found.sensors, std::move(found.ipmiutil_sensors), false);
    found.sdr_sensors.clear();
    found.ipmiutil_sensors.clear();
}

std::optional<std::int64_t> number_of(const PowerSupply& supply) {
    if (!supply.slot) return std::nullopt;
    return power_supply_number(*supply.slot);
}

bool is_same(const PowerSupply& a, const PowerSupply& b) {
    const auto letters = [](const std::string& text) {
        std::string found;
        for (const char c : text)
            if (c != ' ' && c != '-') found += c;
        return found;
    };
    if (a.serial && b.serial) return letters(*a.serial) == letters(*b.serial);
    const auto number = number_of(a);
    return number && number == number_of(b);
}

void complete_supply(PowerSupply& supply, const PowerSupply& other) {
    for (const auto& [field, state] : kPowerSupplyStates)
        if (!(supply.*state) && other.*state)
            supply.elsewhere.push_back({field, place_of(other, field)});
    complete(supply, other);
}

void add_power_supply(std::vector<PowerSupply>& supplies, PowerSupply other) {
    for (auto& supply : supplies) {
        if (!is_same(supply, other)) continue;
        complete_supply(supply, other);
        return;
    }
    supplies.push_back(std::move(other));
}

// A FRU of a power supply: "PSU1 FRU (ID 1)".
std::optional<PowerSupply> power_supply_of(const Fru& fru) {
    if (!fru.device) return std::nullopt;
    const auto name = power_supply_name(*fru.device);
    if (name.empty() || (!fru.serial && !fru.product)) return std::nullopt;
    PowerSupply supply;
    supply.place = fru.place;
    supply.slot = std::string(name);
    supply.present = true;
    supply.model = fru.product;
    supply.serial = fru.serial;
    supply.part = fru.part;
    return supply;
}

// "PSU2 Status" with "Presence detected, Power Supply AC lost", "PSU1 Input" in Watts.
std::optional<PowerSupply> power_supply_of(const Sensor& sensor) {
    if (!sensor.name) return std::nullopt;
    const auto name = power_supply_name(*sensor.name);
    if (name.empty()) return std::nullopt;
    PowerSupply supply;
    supply.place = sensor.place;
    supply.slot = std::string(name);
    for (const auto& state : sensor.states) {
        if (state == "Presence detected") supply.present = true;
        if (state.find("AC lost") != std::string::npos) supply.input_state = state;
    }
    supply.elsewhere = {
        {"input_state", place_of(sensor, "states")}
    };
    const auto rest = sensor.name->substr(name.size());
    const bool is_input =
        rest.find("Input") != std::string::npos || rest.find("Pin") != std::string::npos;
    if (is_input && sensor.kind == "power" && sensor.status == "ok")
        supply.input_watts = sensor.reading;
    const bool tells = supply.present || supply.input_state || supply.input_watts;
    return tells ? std::optional(supply) : std::nullopt;
}

// "PSU 1 Firmware" : "4.52"
void add_firmware(std::vector<PowerSupply>& supplies,
                  const std::vector<ComponentVersion>& versions) {
    for (const auto& version : versions) {
        const auto number = power_supply_number(version.name);
        for (auto& supply : supplies)
            if (number && number == number_of(supply) && !supply.firmware &&
                supply.present.value_or(true))
                supply.firmware = version.version;
    }
}

void join_power_supplies(Inventory& found) {
    std::vector<PowerSupply> supplies;
    for (auto& supply : found.power_supplies) add_power_supply(supplies, std::move(supply));
    for (auto& supply : found.firmware_power_supplies)
        add_power_supply(supplies, std::move(supply));
    for (const auto& fru : found.frus)
        if (auto supply = power_supply_of(fru)) add_power_supply(supplies, *std::move(supply));
    for (const auto& sensor : found.sensors) {
        const auto supply = power_supply_of(sensor);
        if (!supply) continue;
        for (auto& known : supplies)
            if (is_same(known, *supply)) complete_supply(known, *supply);
    }
    add_firmware(supplies, found.component_versions);
    found.power_supplies = std::move(supplies);
    found.firmware_power_supplies.clear();
}

}  // namespace

const Sensor* sensor_of_event(const Inventory& found, std::string_view subject) {
    const auto hash = subject.rfind('#');
    std::string number;  // as sensors have it: "1Fh"
    if (hash != std::string_view::npos) {
        auto digits = subject.substr(hash + 1);
        if (digits.starts_with("0x")) digits.remove_prefix(2);
        for (const char c : digits)
            number += c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
        number += 'h';
    }
    const Sensor* meant = nullptr;
    for (const auto& sensor : found.sensors) {
        if (sensor.name != subject && (number.empty() || sensor.number != number)) continue;
        if (meant != nullptr) return nullptr;
        meant = &sensor;
    }
    return meant;
}

std::vector<CaptureGap> join_bmc(Inventory& found) {
    for (const auto& bmc : found.bmcs) {
        if (bmc.self_test) found.bmcs.front().elsewhere.push_back({"self_test", bmc.place});
    }
    merge_all(found.bmcs);
    keep_one_list(found.frus);
    auto gaps = lists_cut_off(found);
    join_sensors(found);
    join_power_supplies(found);
    return gaps;
}

}  // namespace qvhost::inventory
