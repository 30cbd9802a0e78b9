#include "files/temporary_directory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "files/leftovers.h"

namespace qvhost {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory(const std::string& name) {
    std::string pattern = fs::temp_directory_path() / (name + "-XXXXXX");
    if (!::mkdtemp(pattern.data())) throw std::runtime_error(pattern + ": " + std::strerror(errno));
    path_ = pattern;
    held_ = hold_directory(path_);
}

TemporaryDirectory::~TemporaryDirectory() {
    if (kept_) return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

}  // namespace qvhost
