// Which drives make which volume: what the tools tell of that is led to the volumes and drives.
#pragma once

#include <functional>
#include <optional>

#include "inventory/inventory.h"

namespace qvhost::inventory {

// Which of the inventory's drives the system calls so: by serial number, device or WWN.
using FindDevice = std::function<std::optional<std::size_t>(const Drive&)>;

// Expects volumes and drives that are joined. Afterwards each member says which drive it is, if one is
// listed, with the drive's place and names; a member of a drive group stands there for each volume of the
// group; and a drive that says its group itself is a member of it.
void join_members(Inventory& inventory, const FindDevice& find_device);

}  // namespace qvhost::inventory
