#include "qvhost/present/new_files.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qvhost {

namespace fs = std::filesystem;

void fail(const fs::path& path, const std::string& reason) {
    throw std::runtime_error(path.string() + ": " + reason);
}

NewFiles::NewFiles(fs::path directory) : directory_(std::move(directory)) {
    if (::mkdir(directory_.c_str(), 0700) == 0) {
        made_ = true;
    } else if (errno != EEXIST) {
        fail(directory_, std::string("cannot make the directory: ") + std::strerror(errno));
    } else if (!fs::is_directory(directory_)) {
        fail(directory_, "not a directory");
    } else if (!fs::is_empty(directory_)) {
        fail(directory_, "the directory is not empty; nothing is written into it");
    }
}

NewFiles::~NewFiles() {
    if (kept_) return;
    std::error_code ignored;
    for (const auto& entry : entries_) fs::remove_all(entry, ignored);
    if (made_) fs::remove(directory_, ignored);
}

}  // namespace qvhost
