// What a user sees while a collection runs, on standard error: on a terminal one line that changes,
// elsewhere a line for each module and each command.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "qvhost/collect/command_watch.h"
#include "qvhost/collect/lanes.h"
#include "qvhost/finish/journal_importer.h"

namespace qvhost {

struct LaneProgress {
    const CollectionState* state;
    bool has_ended;
};

class Progress {
public:
    Progress(const LogDir& dir, bool quiet, const std::vector<Lane>& lanes);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // No lane runs beyond the first `started` ones: the last of these asks all modules that are left.
    void no_lanes_behind(std::size_t started);

    // The lanes that were started, from the first one on.
    void update(const std::vector<LaneProgress>& lanes);

    // Clears the line. Call it before anything else is written to the terminal.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    struct Shown {
        CommandWatch commands;
        std::size_t next = 0;  // module to begin, of all lanes' modules
        std::size_t end = 0;
        std::string part = {};  // of the lane, the one that runs, in words
    };

    std::string words_of(const std::string& mark, Shown& lane) const;
    void show_line(const std::vector<LaneProgress>& lanes);

    bool quiet_;
    bool terminal_;
    std::vector<Shown> lanes_;
    std::vector<std::string> titles_;  // of the modules of all lanes
    Clock::time_point start_ = Clock::now();
    bool shown_ = false;
};

}  // namespace qvhost
