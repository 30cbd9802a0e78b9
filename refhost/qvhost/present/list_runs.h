// "qvhost list": the collections of a log directory.
#pragma once

#include <filesystem>

namespace qvhost {

// Prints a line for each, the newest first: when it was, how it ended, what it found, where it is. Throws
// std::runtime_error if there is none.
void list_runs(const std::filesystem::path& log_dir);

}  // namespace qvhost
