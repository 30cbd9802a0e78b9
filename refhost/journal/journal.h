// The journal: what happens in a collection, in order, appended to one file by the collecting
// process with one write() an entry. What was written survives the death of every process, so the
// supervisor can read it while it grows, and after a crash.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "repository/record.h"

namespace qvhost {

namespace journal {
class Encoder;
}

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
struct EndEntry {  // the collection ran to its end
    std::string
        error;  // why it could not run at all (the plug-in did not load, ...); empty: it did
    bool operator==(const EndEntry&) const = default;
};

using JournalEntry = std::variant<ModuleEntry, TableStartEntry, Record, TableEndEntry, EndEntry>;

class JournalWriter {
public:
    // Creates the file (mode 0600). Throws std::system_error naming the file.
    explicit JournalWriter(const std::string& path);
    ~JournalWriter();
    JournalWriter(const JournalWriter&) = delete;
    JournalWriter& operator=(const JournalWriter&) = delete;

    // Appends one entry. Throws std::system_error when it cannot be written whole (disk full); the
    // file then ends where it did before.
    void append(const JournalEntry& entry);
    void append(const Record& record);

private:
    void write_buffer();

    int fd_;
    std::string path_;
    std::unique_ptr<journal::Encoder> encoder_;
    std::string buffer_;  // the entry that is being appended
};

class JournalReader {
public:
    // The file need not exist yet.
    explicit JournalReader(std::string path);
    ~JournalReader();
    JournalReader(const JournalReader&) = delete;
    JournalReader& operator=(const JournalReader&) = delete;

    // Hands over every entry that is complete by now and has not been handed over before, or those
    // in the next `most` bytes (at least one entry) and a little more; returns how many: none only if
    // there is none yet. Half an entry at the end of the file waits for the rest. Memory does not
    // grow with the file. Throws std::runtime_error on an entry that cannot be one.
    std::size_t read(const std::function<void(const JournalEntry&)>& take,
                     std::size_t most = std::numeric_limits<std::size_t>::max());

private:
    std::string path_;
    int fd_ = -1;
    std::string pending_;
    JournalEntry entry_;  // the one being handed over
};

}  // namespace qvhost
