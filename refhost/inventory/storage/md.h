// What /proc/mdstat and mdadm tell alike of an array of md.
#pragma once

#include <string_view>
#include <vector>

#include "inventory/reading.h"

namespace qvhost::inventory {

// An array of md, and the drives in it.
struct Md {
    Volume array;
    std::vector<VolumeMember> members;
    bool is_container = false;  // of a firmware's RAID
};

void file(Md&& md, Reading& reading);

// A member of an array that is out of it.
void add_faulty(Reading& reading, std::int64_t line, std::string_view device);

// A number of KiB, as both count an array's size, in bytes; notes a gap if it is none.
Integer bytes_of_blocks(std::string_view blocks, Reading& reading, std::int64_t line);

}  // namespace qvhost::inventory
