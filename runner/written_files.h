// Which files of the current directory change while a command runs: tools leave files where they are. From
// the environment:
//     QV_DIRECTORY_SHARED  other commands write there at the same time
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "runner/shell_words.h"

namespace runner {

// Compares what lies there without regard to the clock, which may be set meanwhile.
class WrittenFiles {
public:
    explicit WrittenFiles(bool looks, const std::string& command = {});

    // The names of what is new or changed since, sorted. In a shared directory others may have done it.
    std::vector<std::string> changed() const;

    struct Bytes {
        // Of the files that are new or changed since; in a shared directory of those that the command names.
        std::uint64_t largest = 0;
        std::uint64_t all = 0;  // of all files here and in the directory "report"
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
    bool may_be_its_own(const std::string& name) const;

    bool looks_;
    std::optional<NamedInDirectory> named_;  // by the command, if the directory is shared
    States before_;
};

// The files that commands should have written that were never started. What lies there is an earlier
// command's, or nobody's.
void note_started(const std::string& command);
void note_not_started(const std::string& command);
bool is_stale(const std::string& path);

}  // namespace runner
