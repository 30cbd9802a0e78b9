// Reads every capture of a log directory that a reader knows into one inventory.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "inventory/inventory.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

// What is known of the command that made a capture.
struct CaptureOrigin {
    std::string capture;      // the file's name in the log directory
    std::string tool;         // "ipmitool"
    std::string ended_badly;  // in words; empty: it ran to its end. "killed by signal 9"
};

struct SurveyedCapture {
    std::string name;
    std::string tool;         // empty if no command is known that made it
    std::string ended_badly;  // as its origin's
    bool is_there = false;    // false: a command was to make it, and there is no such file
    Understanding how;

    // Whether it says all that it should: its command ran to its end, and each row was read.
    bool whole() const { return is_there && ended_badly.empty() && how.whole(); }
};

struct Survey {
    Inventory inventory;
    std::vector<SurveyedCapture> captures;  // those that a reader knows

    const SurveyedCapture* find(const std::string& capture) const;
};

// Hands events on while it reads. Captures that cannot be read are in the survey with a gap that says
// why. Links are not followed. What is in `foreign` (names in the directory) is not the collection's and is not
// read.
Survey survey(const std::filesystem::path& log_dir, const std::vector<CaptureOrigin>& origins,
              const EventSink& events, const std::set<std::string>& foreign = {});

// Reads one capture with its reader, adds what it tells to `found`, and returns whether it was read whole.
bool read_capture(const std::filesystem::path& log_dir, const std::string& name, Inventory& found);

}  // namespace qvhost::inventory
