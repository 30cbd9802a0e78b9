#include "files/sync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "files/descriptor.h"

namespace qvhost {

namespace fs = std::filesystem;

namespace {

Descriptor open_file(const fs::path& path) {
    return Descriptor(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

void sync_one(const fs::path& path) {
    const auto file = open_file(path);
    if (!file && errno == ENOENT) return;
    if (file && ::fsync(file.get()) == 0) return;
    // Some file systems have nothing to wait for.
    if (file && (errno == EINVAL || errno == EROFS)) return;
    throw std::system_error(errno, std::generic_category(), path.string() + ": cannot keep it");
}

}  // namespace

void sync_names(const fs::path& directory) { sync_one(directory); }

void sync_tree(const fs::path& directory, bool (*left_out)(const fs::path& name)) {
    std::vector<fs::path> files;
    std::vector<fs::path> directories{directory};
    for (std::size_t i = 0; i < directories.size(); ++i) {
        for (const auto& entry : fs::directory_iterator(fs::path(directories[i]))) {
            if (left_out && left_out(entry.path().filename())) continue;
            const auto status = entry.symlink_status();
            if (fs::is_regular_file(status)) files.push_back(entry.path());
            if (fs::is_directory(status)) directories.push_back(entry.path());
        }
    }
    // All are on their way before the first is waited for.
    for (const auto& path : files) {
        const auto file = open_file(path);
        if (file) ::sync_file_range(file.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
    }
    for (const auto& path : files) sync_one(path);
    for (const auto& path : directories) sync_one(path);
    sync_one(directory.parent_path());
}

}  // namespace qvhost
