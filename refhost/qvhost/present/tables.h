// `qvhost tables`: what can be collected.
#pragma once

#include <filesystem>

namespace qvhost {

// Lists the plug-in's modules and tables with their titles, as far as it declares them, and layouts.
void list_tables(const std::filesystem::path& plugin);

}  // namespace qvhost
