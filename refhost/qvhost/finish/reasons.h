// Why a table is empty or partial, as far as the log, the commands and the captures tell.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

class Evidence {
public:
    // Reads the log of the collection. `tools` is the directory of the vendors' tools; captures that
    // are older than `started` are those of an earlier collection.
    Evidence(const LogDir& dir, std::filesystem::path tools,
             std::filesystem::file_time_type started, std::vector<CommandInfo> commands);

    // Why the table has no records, for people. Never empty.
    std::string why_empty(const std::string& table) const;

    // Why a table that has records may lack some; empty: nothing tells that it does.
    std::string why_partial(const std::string& table) const;

private:
    struct Source;
    static const Source* source_of(const std::string& table);
    std::string from_command(const Source& source) const;
    std::string from_log(const Source& source) const;
    std::string from_capture(const Source& source) const;
    bool is_installed(const std::string& tool) const;
    // Sets `text` to what follows the words in the log; null if they are not there.
    const std::string* behind(const std::string& words, std::string& text) const;

    std::filesystem::path captures_;
    std::filesystem::path tools_;
    std::filesystem::file_time_type started_;
    std::vector<CommandInfo> commands_;
    std::vector<std::string> messages_;
};

}  // namespace qvhost
