// Makes a bundle: a report with its captures as one file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "bundle/archive_writer.h"
#include "bundle/manifest.h"
#include "store/store.h"

namespace qvhost::bundle {

struct Order {
    std::filesystem::path log_dir;
    std::vector<std::string> names;  // files and directories in it that belong to the run
    std::vector<LeftOut> left_out;   // what else is there, with the reason
    std::filesystem::path output;    // replaced as a whole
    Format format = Format::tar_zst;
    std::uint64_t most_bytes = 0;  // of the bundle; 0: as many as it takes
    std::string redacted = {};     // as the manifest says it
};

// Returns what the bundle holds. The largest captures are left out until it has no more bytes than it may. Throws
// std::runtime_error or std::system_error naming the file that cannot be read, changed meanwhile, or cannot be
// written; there is no bundle then.
Manifest write_bundle(const Store& store, const std::string& program, const Order& order);

}  // namespace qvhost::bundle
