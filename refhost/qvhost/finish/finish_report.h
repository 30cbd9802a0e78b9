// Finishes a report once its store has all records.
#pragma once

#include <filesystem>

#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

// Completes the store, which has the declarations of the tables, with what the captures and the command log
// tell (the machine, the commands, why tables are empty or partial), and writes the views that people and programs read: report.json and
// the page. `tools` is the directory of the vendors' tools; captures that are older than `started` are
// those of an earlier collection.
void finish_report(Store& store, const LogDir& dir, const std::filesystem::path& tools,
                   std::filesystem::file_time_type started);

}  // namespace qvhost
