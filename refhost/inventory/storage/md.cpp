#include "inventory/storage/md.h"

#include <utility>

#include "inventory/storage/device_name.h"
#include "inventory/text.h"

namespace qvhost::inventory {

void file(Md&& md, Reading& reading) {
    reading.found.volumes.push_back(std::move(md.array));
    for (auto& member : md.members) reading.found.volume_members.push_back(std::move(member));
}

void add_faulty(Reading& reading, std::int64_t line, std::string_view device) {
    auto drive = reading.entity_at<Drive>(line);
    drive.device = drive_of(device);
    drive.state = "faulty";
    reading.found.drives.push_back(std::move(drive));
}

Integer bytes_of_blocks(std::string_view blocks, Reading& reading, std::int64_t line) {
    const auto count = integer(blocks);
    if (count && *count >= 0 && *count < (std::int64_t{1} << 50)) return *count * 1024;
    reading.how.gap(line, "a size that cannot be read");
    return std::nullopt;
}

}  // namespace qvhost::inventory
