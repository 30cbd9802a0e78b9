// What captures tell that is no entity of its own: verdicts need most of it, and lamps, states of the chassis and
// versions are read to know that a capture is understood. Views do not show these.
#pragma once

#include <string>

#include "inventory/entities.h"

namespace qvhost::inventory {

// A row of a RAID controller's topology: a drive group or an array of it.
struct TopologyRow {
    Place place;
    Integer controller, drive_group, array;
    Text type;         // "RAID5"
    Text state;        // as printed
    std::string tool;  // whose numbers these are
};

// A line of lspci.
struct PciDevice {
    Place place;
    Text address;       // "03:00.0"
    Text device_class;  // "RAID bus controller"
    Text name;
};

// How many controllers a vendor's tool says there are.
struct ControllerCount {
    Place place;
    Text tool;
    Integer count;
};

// How full the BMC's event log is.
struct SelLog {
    Place place;
    Integer entries;
    Real used_percent;
    Flag overflow;
};

// dmidecode's type 38: the firmware says that there is a BMC.
struct IpmiDevice {
    Place place;
    Text interface_type;
};

// What the operating system says of itself.
struct HostFacts {
    Place place;
    Text host, machine_id, os, kernel;
    Integer uptime_seconds;
    Text cmdline;  // of the kernel
};

// A place for a memory module that holds none.
struct EmptyMemorySlot {
    Place place;
    Text slot;
};

// The BMC's own words on the chassis: "Power Overload", "false".
struct ChassisState {
    Place place;
    std::string name;
    Text state;
};

// A lamp that the BMC drives.
struct Led {
    Place place;
    std::string name;
    Text state;  // "amber, on"
};

// A version that a BMC's maker lists: of firmware, boot blocks, FPGAs.
struct ComponentVersion {
    Place place;
    std::string name;
    Text version;
};

// What a source's clock said at a time that the same capture names beside it.
struct ClockReading {
    Place place;
    std::string source;  // as an event's
    Text time;           // of the source, ISO 8601
    Text system_time;    // of this system, ISO 8601
};

}  // namespace qvhost::inventory
