// How an entry stands in the journal: its length (32 bits, of all that follows), its kind (one byte),
// its fields. Numbers are little-endian as the processor keeps them; a text is its length and its
// bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "journal/journal.h"

namespace qvhost::journal {

inline constexpr std::size_t kHeadSize = sizeof(std::uint32_t);

// Appends the entry to `bytes`. Throws std::length_error if it is longer than 4 GiB.
void encode(const JournalEntry& entry, std::string& bytes);
void encode(const Record& record, std::string& bytes);

// Sets `entry` to what `body` (what stands behind its length) is; a record is refilled in place. Throws
// std::runtime_error if it is no entry.
void decode(std::string_view body, JournalEntry& entry);

}  // namespace qvhost::journal
