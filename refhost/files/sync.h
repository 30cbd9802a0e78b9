// Waits until the disk has what was written.
#pragma once

#include <filesystem>

namespace qvhost {

// Every file in the directory and below, the directories, and the directory's own entry; entries for which `left_out`
// is true are not, nor are links. Throws std::system_error naming what the disk did not take.
void sync_tree(const std::filesystem::path& directory,
               bool (*left_out)(const std::filesystem::path& name) = nullptr);

// Waits until the disk has the names in the directory: what was made, moved or removed there.
void sync_names(const std::filesystem::path& directory);

}  // namespace qvhost
