// The tables that a plug-in declares, and the tools that it needs: tables.json, which lies beside it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "store/declared_table.h"

namespace qvhost {

// A tool that the plug-in runs from qv_tools.
struct VendorTool {
    std::string name;
    std::vector<std::string> files;  // of its builds
};

struct DeclaredTables {
    std::vector<DeclaredTable> tables;
    std::vector<VendorTool> tools;
    std::string
        problem;  // why there are none although there is a file, for people; empty: nothing is wrong
};

// Of the plug-in P/lib/NAME.so what P/share/qvhost/tables.json says. A plug-in need not have that file.
DeclaredTables tables_declared_by(const std::filesystem::path& plugin);

// The vendors' tools that the plug-in runs; empty: the installed one. A plug-in that does not say which it
// needs runs those of the installed one.
std::vector<VendorTool> vendor_tools_of(const std::filesystem::path& plugin);

// Reads such a file. Throws std::runtime_error that says what is wrong with it.
DeclaredTables read_declared_tables(const std::filesystem::path& file);

}  // namespace qvhost
