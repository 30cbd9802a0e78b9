#include "qvhost/present/unfinished.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace qvhost {

namespace fs = std::filesystem;

Unfinished::Unfinished(const fs::path& name) {
    std::string pattern = name.string() + ".XXXXXX";
    if (!::mkdtemp(pattern.data()))
        throw std::system_error(errno, std::generic_category(),
                                name.string() + ": cannot make a directory beside it");
    path_ = pattern;
}

Unfinished::~Unfinished() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
}

void Unfinished::become(const fs::path& directory) {
    fs::rename(path_, directory);
    path_.clear();
}

}  // namespace qvhost
