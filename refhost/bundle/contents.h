// Which files of a log directory make a bundle.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "bundle/manifest.h"

namespace qvhost::bundle {

struct Source {
    std::string name;  // in the directory and in the bundle
    std::uint64_t bytes = 0;
    bool is_capture = false;  // may be left out to make the bundle smaller
};

struct Contents {
    std::vector<Source> files;  // by name
    std::vector<LeftOut> left_out;
};

// The files and directories of these names in the directory, with all that is in them. Links, devices and files
// whose names not every system takes are left out. Throws std::filesystem::filesystem_error.
Contents contents_of(const std::filesystem::path& directory, const std::vector<std::string>& names);

}  // namespace qvhost::bundle
