// The journal: what happens in a collection, in order, in one file that the collecting process
// writes through memory that it shares with the kernel. What was appended survives the death of every
// process, so the supervisor can read it while it grows, and after a crash.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "files/descriptor.h"
#include "journal/mapping.h"
#include "repository/record.h"

namespace qvhost {

namespace journal {
class Encoder;
}  // namespace journal

struct ModuleEntry {  // a module that is going to be asked
    std::string name;
    std::string display;
    std::vector<std::string> tables = {};  // for these, in this order
    bool operator==(const ModuleEntry&) const = default;
};
struct TableStartEntry {  // a table's enumerate callback is about to be called
    std::string module;
    std::string table;
    bool operator==(const TableStartEntry&) const = default;
};
struct TableEndEntry {  // its callbacks are done
    std::string module;
    std::string table;
    Layout layout;
    std::string error;  // what a callback threw, as text; empty: nothing
    bool operator==(const TableEndEntry&) const = default;
};
// The error of a table that has as many records as are kept: its module goes on.
inline constexpr const char* kRecordsCut = "its records had reached the size limit";
// A question of the host's own. Either it is about to be asked, and has a tool; or it cannot be, and has a lack.
struct QuestionEntry {
    std::string tool;       // which is asked; empty: none
    std::string subsystem;  // whose verdict lacks what cannot be asked
    std::string lack;       // what that is, in words; empty: it is asked
    bool operator==(const QuestionEntry&) const = default;
};
struct EndEntry {  // the collection ran to its end
    // Why it could not run at all (the plug-in did not load, ...); empty: it did.
    std::string error;
    bool operator==(const EndEntry&) const = default;
};
struct ModulesEndEntry {  // all modules of this process were asked; no record follows
    // Whether the BMC has left its questions without an answer (runner/device.h).
    bool device_is_left;
    bool operator==(const ModulesEndEntry&) const = default;
};

using JournalEntry = std::variant<ModuleEntry, TableStartEntry, Record, TableEndEntry, EndEntry,
                                  QuestionEntry, ModulesEndEntry>;

class JournalWriter {
public:
    // Creates the file (mode 0600). Throws std::system_error naming the file.
    explicit JournalWriter(const std::string& path);
    ~JournalWriter();
    JournalWriter(const JournalWriter&) = delete;
    JournalWriter& operator=(const JournalWriter&) = delete;

    // Appends one entry. Throws std::system_error when there is no room for the whole of it (disk
    // full); the journal then ends where it did before.
    void append(const JournalEntry& entry);
    void append(const Record& record);

    // How many bytes are written by now.
    std::size_t size() const { return end_; }

private:
    void write_buffer();
    void make_room(std::size_t size);
    void write_at(std::size_t offset, const char* data, std::size_t size);
    void publish(std::size_t end);

    Descriptor file_;
    std::string path_;
    std::unique_ptr<journal::Encoder> encoder_;
    std::string buffer_;      // the entry that is being appended
    journal::Mapping start_;  // the file's first bytes, which say how far it is written
    journal::Mapping window_;
    std::size_t window_start_ = 0;
    std::size_t room_ = 0;  // the offset up to which the disk has room
    std::size_t end_ = 0;
};

class JournalReader {
public:
    // The file need not exist yet.
    explicit JournalReader(std::string path);

    // Hands over every entry that is there by now and has not been handed over before, or those
    // in the next `most` bytes (at least one entry) and a little more; returns how many: none only if
    // there is none yet. A file that ends within an entry may have the rest later. Memory does not
    // grow with the file, nor with its holes. Throws std::runtime_error on an entry that cannot be one.
    std::size_t read(const std::function<void(const JournalEntry&)>& take,
                     std::size_t most = std::numeric_limits<std::size_t>::max());

private:
    std::size_t written() const;
    void expect_room_for(std::size_t entry) const;

    std::string path_;
    Descriptor file_;
    std::size_t next_;     // where to read on
    std::string pending_;  // the beginning of an entry
    JournalEntry entry_;   // the one being handed over
};

}  // namespace qvhost
