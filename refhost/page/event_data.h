// The events of all sources as the page takes them: one table, its rows in files of a few thousand each.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>

#include "store/store.h"

namespace qvhost::page {

// Writes the rows into `data`, in the store's order, and returns what the overview tells of them. Memory
// does not grow with their number.
nlohmann::ordered_json write_events(const Store& store, const std::filesystem::path& data);

}  // namespace qvhost::page
