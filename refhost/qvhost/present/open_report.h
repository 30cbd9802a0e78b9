// A report as the user names it: a log directory or a store file.
#pragma once

#include <filesystem>

#include "store/store.h"

namespace qvhost {

struct Report {
    std::filesystem::path file;  // the store's
    Store store;
};

// Opens it for reading; that it is incomplete is told on standard error. A directory whose
// collection was killed gets its store completed first, if nobody is at it.
Report open_report(const std::filesystem::path& report);

}  // namespace qvhost
