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
    std::vector<VolumeMember> volume_members;

    std::vector<TopologyRow> topology;
    std::vector<PciDevice> pci_devices;
    std::vector<ControllerCount> controller_counts;
    std::vector<SelLog> sel_logs;
    std::vector<IpmiDevice> ipmi_devices;
    std::vector<ClockReading> clocks;
    std::vector<HostFacts> host_facts;
    std::vector<EmptyMemorySlot> empty_memory_slots;
    std::vector<ChassisState> chassis_states;
    std::vector<Led> leds;
    std::vector<ComponentVersion> component_versions;

    // What other tools say of the same things. join_bmc() and join_machine() move these into the
    // entities above.
    std::vector<Sensor> sdr_sensors;                   // ipmitool sdr
    std::vector<Sensor> ipmiutil_sensors;              // ipmiutil sensor
    std::vector<PowerSupply> firmware_power_supplies;  // dmidecode's type 39
    std::vector<Processor> kernel_processors;          // /proc/cpuinfo
};

}  // namespace qvhost::inventory
