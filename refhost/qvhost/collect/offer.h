// What a plug-in can collect.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qvhost/base/plugin.h"

namespace qvhost {

struct OfferedModule {
    std::string name;
    std::string display;              // for people
    std::vector<std::string> tables;  // ids, in the order in which they are collected
    bool operator==(const OfferedModule&) const = default;
};

// In the order in which the modules are collected.
using Offer = std::vector<OfferedModule>;

Offer offer_of(const Plugin& plugin);

// Loads the plug-in in a process of its own and asks it, so that one that crashes or hangs there does this
// program no harm. Throws std::runtime_error that says why there is no answer, also if it takes longer than
// `seconds`.
Offer offer_of(const std::filesystem::path& plugin, unsigned seconds);

}  // namespace qvhost
