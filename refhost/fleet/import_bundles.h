// Imports bundles as people name them, several at a time.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "fleet/database.h"

namespace qvhost::fleet {

struct ImportOptions {
    std::vector<std::filesystem::path> bundles;  // a directory stands for the bundles in it
    std::string place;                           // of the database
    unsigned jobs = 0;  // that read bundles at the same time; 0: one a processor
    std::chrono::seconds reconnect_timeout{60};  // for a server that is gone
};

struct ImportSummary {
    std::size_t imported = 0, there_already = 0, skipped = 0;
    std::size_t rows = 0, stored = 0;
};

// Tells of new hosts on `out`, of bundles that were skipped and of lost connections on `err`. A bundle that cannot be
// imported keeps no other from being so. Throws if the database cannot be used.
ImportSummary import_bundles(const ImportOptions& options, std::ostream& out, std::ostream& err);

}  // namespace qvhost::fleet
