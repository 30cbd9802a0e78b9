// What a plug-in declares of a table, as the store keeps it: older stores have none of it.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace qvhost {

class Store;

struct DeclaredTable {
    std::string id;
    std::string title;         // for people
    std::string filled;        // "always", "never", "not on Linux", or what --also takes
    std::string tool;          // without its directory and build; empty: no tool is run
    bool in_qv_tools = false;  // else it is on the search path
    std::string command;       // "{P}" and the like in it stand for places
    std::string capture;       // the file that the tool leaves in the log directory
    std::string log_label;  // in the log's messages on the command's status; empty: there are none
    std::string not_asked;  // why some servers are not asked; empty: there is no one reason
    // The commands, in order, whose answers decide whether this one is run. Of one that ends with ">" it
    // is enough that it was run, whatever it says.
    std::vector<std::string> gates;
    bool operator==(const DeclaredTable&) const = default;
};

// Replaces those that the store has.
void write_declared_tables(Store& store, std::span<const DeclaredTable> tables);
std::vector<DeclaredTable> declared_tables(const Store& store);

}  // namespace qvhost
