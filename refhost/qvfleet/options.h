// What a command line of qvfleet says, once it is parsed.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "fleet/import_bundles.h"
#include "fleet/print.h"
#include "fleet/times.h"

namespace qvhost::fleet {

struct Options {
    std::string place = "fleet.sqlite";  // of the database
    ImportOptions import;
    Printing printing;
    std::string silent_after = "8d";  // weekly runs, and a day
    std::string as_of;                // a time; empty: now
    std::string sql;
    std::string relation;
    std::vector<std::string> forgotten;  // names of hosts
    std::string before;                  // a day or a time
    std::string samples = "samples";     // recorded servers
};

// `options` gets what is parsed; it outlives the result.
std::unique_ptr<CLI::App> command_line(Options& options);

}  // namespace qvhost::fleet
