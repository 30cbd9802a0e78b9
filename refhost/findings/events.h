// Judges events while they are read, so that a million of them need no memory: those that say the same
// of the same thing are counted together.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "findings/collector.h"
#include "inventory/inventory.h"

namespace qvhost::findings {

struct EventRow;

class EventJudge {
public:
    EventJudge() = default;
    EventJudge(const EventJudge&) = delete;
    EventJudge& operator=(const EventJudge&) = delete;

    void take(const inventory::Event& event);

    // Files what was found. `now` is the time of the collection on this system's clock, ISO 8601; the
    // age of an event without a time is that of the event with one before it in its source, else new.
    void finish(const inventory::Inventory& inventory, const std::string& now, Collector& findings);

    // After finish(): when the event was logged that began the state of one of these sensors, if no later event
    // ended it.
    Text began(const std::vector<EntityRef>& entities) const;

private:
    struct Group {
        const EventRow* row = nullptr;
        std::string subject;
        std::string source;
        std::string says;   // the latest's text
        Text time;          // the latest's
        std::string dated;  // the latest's time, or of the event before it that has one
        std::int64_t count = 0;
        std::int64_t open = 0;  // asserted and not deasserted
        Text opened;            // when it was asserted
        Text first_time;        // the first event's
        Place first, last;
        std::string day;  // of the latest, and how many there were on it
        std::int64_t on_day = 0;
        std::int64_t most_on_day = 0;
    };
    struct Source {
        std::span<const EventRow> rows;  // that are about it
        std::string dated;               // the latest time seen
    };
    Source& source_of(const inventory::Event& event);
    void end_redundancy_lost(const inventory::Event& event);
    void finish(const Group& group, const inventory::Inventory& inventory, const std::string& now,
                Collector& findings);

    std::map<std::string, Group> groups_;
    std::map<std::string, Source> sources_;
    std::pair<const std::string, Source>* latest_ =
        nullptr;                                 // of sources_: the one of the last event
    std::map<std::int64_t, std::string> began_;  // by the number of a sensor
};

}  // namespace qvhost::findings
