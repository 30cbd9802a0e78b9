// All entities of one collection, and the observations beside them that verdicts need.
#pragma once

#include <vector>

#include "inventory/entities.h"
#include "inventory/observations.h"

namespace qvhost::inventory {

struct Inventory {
    std::vector<System> systems;
    std::vector<Processor> processors;
    std::vector<MemoryModule> memory_modules;
    std::vector<Bmc> bmcs;
    std::vector<Sensor> sensors;
    std::vector<PowerSupply> power_supplies;
    std::vector<Fru> frus;
    std::vector<Controller> controllers;
    std::vector<Battery> batteries;
    std::vector<Enclosure> enclosures;
    std::vector<Volume> volumes;
    std::vector<Drive> drives;

    std::vector<TopologyRow> topology;
    std::vector<PciDevice> pci_devices;
    std::vector<ControllerCount> controller_counts;
    std::vector<SelLog> sel_logs;
    std::vector<IpmiDevice> ipmi_devices;
    std::vector<ClockReading> clocks;
};

}  // namespace qvhost::inventory
