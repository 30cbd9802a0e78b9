// Judges sensors by the BMC's own words: the status column, and the states of discrete sensors; power
// supplies, and the BMC's self test.
#pragma once

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

void judge_sensors(const inventory::Inventory& inventory, Collector& findings);
void judge_power_supplies(const inventory::Inventory& inventory, Collector& findings);
void judge_bmc(const inventory::Inventory& inventory, Collector& findings);

// Words of sensors that no table knows, states and statuses: whether they are well cannot be told.
struct UnknownWord {
    Subsystem subsystem;
    std::string sensor;
    std::string word;
    Place place;
};
std::vector<UnknownWord> unknown_words(const inventory::Inventory& inventory);

// Whether a status is one with which the tool says that all is well, or that nothing is read.
bool is_well(const inventory::Sensor& sensor);

}  // namespace qvhost::findings
