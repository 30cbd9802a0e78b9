// The plug-in: loaded with dlopen, known by AddModules alone.
#pragma once

#include <boost/shared_ptr.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include "rmodule.h"

namespace qvhost {

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
    Modules modules_;  // gone before the library that made them
};

}  // namespace qvhost
