// The page that people open: index.html with its assets, and the data it loads.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "store/store.h"

namespace qvhost {

// Writes index.html, assets/ and data/ into `report` (directories mode 0700, files 0600) and replaces an
// earlier page. index.html comes last. `log_dir` holds the captures that the page shows; empty: none.
// `tables` are the ids of the plug-in's tables that the page has; none: all. `nonce` admits the page's own
// styles and must not be guessed; empty: a random one. Memory does not grow with the number of
// records. Throws std::runtime_error naming the file.
void write_page(const Store& store, const std::filesystem::path& report,
                const std::filesystem::path& log_dir, const std::set<std::string>& tables = {},
                const std::string& nonce = {});

}  // namespace qvhost
