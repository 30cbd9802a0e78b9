// A report as the user names it: a log directory or a store file.
#pragma once

#include <filesystem>
#include <string>

#include "store/store.h"

namespace qvhost {

struct Report {
    std::filesystem::path file;  // the store's
    Store store;
};

// Opens it for reading, and warns on standard error if it is incomplete. If the collection in a directory
// was killed, its report is completed first.
Report open_report(const std::filesystem::path& report);

// The same of a log directory with its captures, which nobody is collecting into. `use` says what they are for: "a
// bundle is made of". Throws std::runtime_error.
Report open_with_captures(const std::filesystem::path& log_dir, const std::string& use);

}  // namespace qvhost
