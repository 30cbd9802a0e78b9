// A table as the page takes it: columns, and its rows in files of a few thousand each.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "store/store.h"

namespace qvhost::page {

// Writes the rows into `data`, in files whose names begin with `stem`, and returns what the overview
// tells of the table. `capture` is the file that the table is read from; empty: nobody declares one.
nlohmann::ordered_json write_table(const Store& store, const ModuleInfo& module,
                                   const TableInfo& table, const std::string& capture,
                                   const std::filesystem::path& data, const std::string& stem);

}  // namespace qvhost::page
