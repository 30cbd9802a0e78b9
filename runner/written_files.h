// Which files of the current directory change while a command runs: tools leave files where they are.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace runner {

// Compares what lies there without regard to the clock, which may be set meanwhile.
class WrittenFiles {
public:
    explicit WrittenFiles(bool looks) : looks_(looks), before_(all(".")) {}

    // The names of what is new or changed since, sorted.
    std::vector<std::string> changed() const;

    struct Bytes {
        std::uint64_t largest = 0;  // of the files that are new or changed since
        std::uint64_t all = 0;      // of all files here and in the directory "report"
    };
    Bytes bytes() const;

private:
    struct State {
        ino_t inode;
        off_t size;  // 0 of what is no regular file
        timespec written;
        timespec changed;
        bool operator==(const State& other) const;
    };
    using States = std::map<std::string, State>;
    States all(const char* directory) const;
    bool is_changed(const States::value_type& file) const;

    bool looks_;
    States before_;
};

// The files that commands should have written that were never started. What lies there is an earlier
// command's, or nobody's.
void note_started(const std::string& command);
void note_not_started(const std::string& command);
bool is_stale(const std::string& path);

}  // namespace runner
