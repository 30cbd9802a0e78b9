// What a user sees while a collection runs, on standard error: on a terminal one line that changes,
// elsewhere a line for each module and each command.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "qvhost/base/log_dir.h"
#include "qvhost/collect/command_watch.h"
#include "qvhost/finish/journal_importer.h"

namespace qvhost {

class Progress {
public:
    Progress(const LogDir& dir, bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void update(const CollectionState& state);

    // Clears the line. Call it before anything else is written to the terminal.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string words_of(const std::string& mark, const CollectionState& state);
    void show_line(const std::string& table);

    bool quiet_;
    bool terminal_;
    CommandWatch commands_;
    std::size_t modules_ = 0;  // how many have begun
    std::string part_;         // of the collection, the one that runs, in words
    Clock::time_point start_ = Clock::now();
    bool shown_ = false;
};

}  // namespace qvhost
