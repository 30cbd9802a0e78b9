// The file begins with the offset of its written end (64 bits); what lies behind that is not written yet. The
// entries follow. How an entry stands there: its length (32 bits, of all that follows), its kind (one byte), its
// fields, a sum of these (32 bits; those of older programs have none). Numbers are little-endian as the
// processor keeps them; a text is its length and its bytes. A record is its head (all but the values) and its
// values; one that has the head of the entry before it is its values alone, which is half of it or less.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "journal/journal.h"

namespace qvhost::journal {

inline constexpr std::size_t kStart = sizeof(std::uint64_t);
inline constexpr std::size_t kHeadSize = sizeof(std::uint32_t);

class Encoder {
public:
    // Appends the entry to `bytes`. Throws std::length_error if it is longer than 4 GiB.
    void encode(const JournalEntry& entry, std::string& bytes);
    void encode(const Record& record, std::string& bytes);

    // The entry before did not get into the journal.
    void forget() { before_.reset(); }

private:
    std::optional<Record> before_;  // the entry before, if it is a record; its values do not count
};

// Sets `entry` to what `body` (what stands behind its length) is; before the call it is the entry
// before, and as it was decoded. Throws std::runtime_error if `body` is no entry.
void decode(std::string_view body, JournalEntry& entry);

}  // namespace qvhost::journal
