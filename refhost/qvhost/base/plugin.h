// The plug-in: loaded with dlopen, asked for its modules, and for operations by their symbols.
#pragma once

#include <boost/shared_ptr.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include "rmodule.h"

namespace qvhost {

// Functions that the plug-in exports and none of its modules calls. --also NAME calls them.
struct Operation {
    const char* name;
    const char* meaning;
    const char* symbol;
    bool takes_repository;
};

// clang-format off
inline constexpr Operation kOperations[] = {
    {"pmc",  "Adaptec controller", "_ZN6marlox10repository8pmc_infoERNS0_11RRepositoryE",      true },
    {"fru0", "first FRU device",   "_ZN6marlox10repository12fru_info_amdERNS0_11RRepositoryE", true },
    {"bios", "BIOS settings",      "_ZN6marlox10repository17get_bios_settingsEv",              false},
};
// clang-format on

using Modules = std::vector<boost::shared_ptr<marlox::repository::RModule>>;

class Plugin {
public:
    // Loads the file and asks it for its modules. Throws std::runtime_error with the reason.
    explicit Plugin(const std::filesystem::path& file);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const Modules& modules() const { return modules_; }

    // An operation that the plug-in exports under this (mangled) name; nullptr if it does not.
    void* operation(const std::string& symbol) const;

private:
    void* handle_;
    Modules modules_;  // destroyed before the library is closed
};

}  // namespace qvhost
