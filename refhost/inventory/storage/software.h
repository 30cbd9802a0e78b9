// Arrays and paths that the operating system itself keeps: md, ZFS, multipath.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_mdstat(CaptureLines& lines, Reading& reading);     // /proc/mdstat
void read_mdadm(CaptureLines& lines, Reading& reading);      // mdadm --detail /dev/md0 ...
void read_zpool(CaptureLines& lines, Reading& reading);      // zpool status
void read_multipath(CaptureLines& lines, Reading& reading);  // multipath -ll

// The drive that a block device is or lies on: "/dev/sdb1" is on "/dev/sdb", "nvme0n1p2" on
// "/dev/nvme0n1".
std::string drive_of(std::string_view device);

}  // namespace qvhost::inventory
