// Why a table is empty or partial, as far as its declaration, the log, the commands and the captures tell.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "qvhost/base/log_dir.h"
#include "store/declared_table.h"
#include "store/store.h"

namespace qvhost {

class Evidence {
public:
    // Reads the log of the collection. `tools` is the directory of the vendors' tools; captures that
    // are older than `started` are those of an earlier collection; the store has the declarations and
    // the commands.
    Evidence(const LogDir& dir, std::filesystem::path tools,
             std::filesystem::file_time_type started, const Store& store);

    // Why the table has no records, for people. Never empty; "unknown" of one that is not declared.
    std::string why_empty(const std::string& table) const;

    // Why a table that has records may lack some; empty: nothing tells that it does.
    std::string why_partial(const std::string& table) const;

private:
    const DeclaredTable* declared(const std::string& id) const;  // null: it is not
    // The last command that left the table's capture; null: there is none.
    const CommandInfo* last_command(const DeclaredTable& table) const;
    std::string from_command(const DeclaredTable& table) const;
    std::string from_log(const DeclaredTable& table) const;
    std::string from_capture(const DeclaredTable& table) const;
    bool is_installed(const std::string& tool) const;
    // Sets `text` to what follows the words in the log; null if they are not there.
    const std::string* behind(const std::string& words, std::string& text) const;

    std::filesystem::path captures_;
    std::filesystem::path tools_;
    std::filesystem::file_time_type started_;
    std::vector<CommandInfo> commands_;
    std::vector<DeclaredTable> declared_;
    std::vector<std::string> also_;  // what the user asked for beside the modules
    std::vector<std::string> messages_;
};

}  // namespace qvhost
