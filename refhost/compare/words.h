// What a difference is called, in words that every view shows.
#pragma once

#include <string>

#include "compare/compare.h"

namespace qvhost::compare {

const char* word(Machines machines);  // "same", "two", "unsure"
const char* word(Trend trend);        // "none", "worse", "better"

// "media errors 3 -> 218 (+215)", "capacity 1000 -> 2000 bytes"
std::string words_of(const FieldChange& change);

// "failed: state Onln -> Offln; media errors 3 -> 218 (+215)"; without fields "removed".
std::string words_of(const Change& change);

// "temperature of 8 drives: Drive 252:1 of controller 0, Drive 252:2 of controller 0, ..."
std::string words_of(const Unread& unread);

// "Drives"; of a kind that nobody knows its own name.
std::string title_of(const std::string& kind);

}  // namespace qvhost::compare
