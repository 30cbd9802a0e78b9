// Which tools read a storage controller that lspci shows.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "inventory/observations.h"

namespace qvhost::inventory {

// Whether it has drives behind it that only a tool of its own tells of.
bool is_raid_controller(const PciDevice& device);

// Whether it has drives behind it that answer for themselves: SATA, NVMe, IDE, and controllers that are
// called RAID but leave the arrays to the system.
bool is_plain_controller(const PciDevice& device);

// The tools for a RAID controller, each of which may do alone, the preferred one first, by the names that
// entities have in `tool`. Empty: none is known.
std::span<const std::string_view> tools_for(const PciDevice& device);

// "storcli or sas3ircu"
std::string any_of(std::span<const std::string_view> tools);

}  // namespace qvhost::inventory
