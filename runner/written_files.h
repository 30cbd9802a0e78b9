// Which files of the current directory change while a command runs: tools leave files where they are.
#pragma once

#include <sys/stat.h>

#include <map>
#include <string>
#include <vector>

namespace runner {

// Compares what lies there without regard to the clock, which may be set meanwhile.
class WrittenFiles {
public:
    WrittenFiles();  // looks only if there is a command log

    // The names of what is new or changed since, sorted.
    std::vector<std::string> changed() const;

private:
    struct State {
        ino_t inode;
        off_t size;
        timespec written;
        timespec changed;
        bool operator==(const State& other) const;
    };
    static std::map<std::string, State> all();

    std::map<std::string, State> before_;
};

// The files that commands should have written that were never started. What lies there is an earlier
// command's, or nobody's.
void note_started(const std::string& command);
void note_not_started(const std::string& command);
bool is_stale(const std::string& path);

}  // namespace runner
