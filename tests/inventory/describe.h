// Entities as text, so that a test compares whole outputs:
//     drives 12: controller=0 enclosure=252 slot=1 state=Onln
// with the line where the entity stands and the fields that are told.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "inventory/capture_lines.h"
#include "inventory/inventory.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// What a reader makes of a text.
struct ReadText {
    Inventory found;
    Understanding how;
    std::vector<Event> events;
};

using Reader = void (*)(CaptureLines&, Reading&);

ReadText read_text(Reader reader, std::string_view text, const std::string& capture = "capture");

// The same beside what other captures gave.
Understanding read_into(Inventory& found, std::vector<Event>& events, Reader reader,
                        std::string_view text, const std::string& capture);

// A line an entity. With `captures`, the capture's name stands before the line.
std::string describe(const Inventory& inventory, bool captures = false);
std::string describe(const Understanding& how);  // "12 lines, 1 not understood (3)", gaps, errors
std::string describe_gaps(const Understanding& how);  // the gaps and errors alone
std::string describe(const std::vector<Event>& events);

// "12: controller=0 ...": of Sensor, PowerSupply, System.
template <class Entity>
std::string describe_one(const Entity& entity);

}  // namespace qvhost::inventory
