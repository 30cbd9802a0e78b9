// What a user sees while a collection runs, on standard error: on a terminal one line that changes,
// elsewhere a line for each module and each capture.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "files/descriptor.h"
#include "qvhost/finish/journal_importer.h"

namespace qvhost {

class Progress {
public:
    // Watches the log directory for captures as they appear.
    Progress(const std::filesystem::path& log_dir, bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // A descriptor that becomes readable when a capture appears; -1 if there is none.
    int watch() const { return watch_.get(); }

    void update(const CollectionState& state);

    // Clears the line. Call it before anything else is written to the terminal.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    std::vector<std::string> new_captures();
    void show_line();

    bool quiet_;
    bool terminal_;
    Descriptor watch_;
    std::size_t modules_ = 0;  // how many have begun
    std::string module_;
    std::string table_;
    std::string capture_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point capture_start_ = start_;
    bool shown_ = false;
};

}  // namespace qvhost
