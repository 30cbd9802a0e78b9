#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost {

// Lists the plug-in's modules and tables with their layouts.
void list_tables(const std::filesystem::path& plugin);

// Shows tables of a report (a log directory or a store file) on standard output; without names all
// that have records, and the empty ones with their reasons.
void show_report(const std::filesystem::path& report, const std::vector<std::string>& tables);

}  // namespace qvhost
