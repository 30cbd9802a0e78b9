// Which modules and tables are collected.
#pragma once

#include <string>
#include <vector>

#include "qvhost/base/options.h"
#include "qvhost/base/plugin.h"

namespace qvhost {

struct SelectedModule {
    marlox::repository::RModule* module;
    std::vector<std::string> tables;
};

// Those that the user asked for, in the order in which they are collected. Throws std::runtime_error
// for a name that no module knows, with those that there are.
std::vector<SelectedModule> select_modules(const Plugin& plugin, const CollectOptions& options);

}  // namespace qvhost
