#include "qvhost/present/unfinished.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace qvhost {

namespace fs = std::filesystem;

void expect_free(const fs::path& directory) {
    std::error_code error;
    const auto type = fs::symlink_status(directory, error).type();
    if (type == fs::file_type::not_found || type == fs::file_type::none ||
        (type == fs::file_type::directory && fs::is_empty(directory)))
        return;
    throw std::runtime_error(directory.string() + ": exists already; nothing is written into it");
}

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
