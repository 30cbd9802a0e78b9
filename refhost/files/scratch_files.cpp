#include "files/scratch_files.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

namespace qvhost {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kMostKept = 1u << 20;  // bytes of a file that waits for the next

}  // namespace

fs::path ScratchFiles::take() {
    const std::lock_guard lock(mutex_);
    if (free_.empty()) return directory_.path() / std::to_string(made_++);
    auto path = std::move(free_.back());
    free_.pop_back();
    return path;
}

void ScratchFiles::give_back(const fs::path& path) {
    std::error_code ignored;
    if (const auto bytes = fs::file_size(path, ignored); !ignored && bytes > kMostKept)
        fs::remove(path, ignored);
    const std::lock_guard lock(mutex_);
    free_.push_back(path);
}

Descriptor ScratchFile::open() const {
    // Not cut to nothing: some file systems write a file that was at once to the disk.
    Descriptor file(::open(path_.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) throw std::system_error(errno, std::generic_category(), path_.string());
    return file;
}

}  // namespace qvhost
