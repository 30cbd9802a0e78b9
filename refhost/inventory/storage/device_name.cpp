#include "inventory/storage/device_name.h"

#include "inventory/text.h"

namespace qvhost::inventory {

std::string drive_of(std::string_view device) {
    if (device.starts_with("/dev/")) device.remove_prefix(5);
    auto name = device;
    while (!name.empty() && is_digit(name.back())) name.remove_suffix(1);
    const bool counts_drives = device.starts_with("nvme") || device.starts_with("mmcblk");
    if (counts_drives) {
        // "nvme0n1p2": the partition stands behind a "p" that follows a digit
        const bool is_part = name.size() < device.size() && name.ends_with('p') &&
                             name.size() > 1 && is_digit(name[name.size() - 2]);
        name = is_part ? name.substr(0, name.size() - 1) : device;
    } else if (!device.starts_with("sd") && !device.starts_with("hd") &&
               !device.starts_with("vd") && !device.starts_with("xvd")) {
        name = device;
    }
    return "/dev/" + std::string(name);
}

}  // namespace qvhost::inventory
