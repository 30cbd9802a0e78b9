// Names of block devices.
#pragma once

#include <string>
#include <string_view>

namespace qvhost::inventory {

// The drive that a block device is or lies on: "/dev/sdb1" is on "/dev/sdb", "nvme0n1p2" on
// "/dev/nvme0n1".
std::string drive_of(std::string_view device);

}  // namespace qvhost::inventory
