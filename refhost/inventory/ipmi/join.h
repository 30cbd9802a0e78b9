// Makes one entity of what several of the BMC's captures say of one thing.
#pragma once

#include <string_view>
#include <vector>

#include "inventory/inventory.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// After all captures are read. Sensors are joined by name and, where a name repeats, by order; power
// supplies by serial number or the number in their names; the BMC is one. Returns what each capture lacks that
// another one has: `sensor` and `sdr elist` list the same sensors in the same order.
std::vector<CaptureGap> join_bmc(Inventory& found);

// The sensor that an event's subject means, after join_bmc(): by its name, or by its number where the
// log has no more ("Fan #1f", "Fan #0x1f"). Null if there is none, or more than one.
const Sensor* sensor_of_event(const Inventory& found, std::string_view subject);

}  // namespace qvhost::inventory
