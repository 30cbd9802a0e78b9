// Which reader reads which capture: a row of the tables that the readers' folders give.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "inventory/capture_lines.h"
#include "inventory/reading.h"

namespace qvhost::inventory {

struct CaptureReader {
    const char* pattern;  // the capture's name; "*" stands for any characters but "/", at least one
    void (*read)(CaptureLines&, Reading&);
    // Another capture that tells the same events: this one is read only if that one is missing or does
    // not come to its end. Null: there is none.
    const char* instead_of = nullptr;
    // A failure that says that there is none of what was asked for is an answer.
    bool may_be_none = false;
    // A log, which may be of any size, since its events are handed on as they are read. Captures of one log
    // tell the same events: of several, one is believed. Null: it is no log.
    const char* log = nullptr;
};

// A log that no other capture tells of.
inline constexpr const char* kOwnLog = "";

// The first row whose pattern fits the capture's name; null: there is none.
const CaptureReader* reader_for(std::span<const CaptureReader> readers, std::string_view capture);

// A file that gives no more than so many lines; `error` is the system's number.
Gap cannot_be_read(int error, std::int64_t lines = 0);

// Calls the row's reader, and puts a gap before all others where the file cannot be read to its end: what a
// reader makes of the part before it may look whole.
void read_lines(const CaptureReader& reader, CaptureLines& lines, Reading& reading);

// "Cachevault is absent!", "Un-supported command": the tool's words for what is not there.
bool says_there_is_none(std::string_view error);

}  // namespace qvhost::inventory
