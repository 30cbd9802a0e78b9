// Arrays and paths that the operating system itself keeps: md, ZFS, multipath.
#pragma once

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

void read_mdstat(CaptureLines& lines, Reading& reading);     // /proc/mdstat
void read_mdadm(CaptureLines& lines, Reading& reading);      // mdadm --detail /dev/md0 ...
void read_zpool(CaptureLines& lines, Reading& reading);      // zpool status
void read_multipath(CaptureLines& lines, Reading& reading);  // multipath -ll

// A drive in the volume, which has no number of a controller's.
inline VolumeMember member_of(const Volume& volume, const Reading& reading, std::int64_t line) {
    auto member = reading.entity_at<VolumeMember>(line);
    member.volume_name = volume.name;
    member.is_spare = false;
    return member;
}

}  // namespace qvhost::inventory
