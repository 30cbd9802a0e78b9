// Refuses to collect where the plug-in would find no tools because the program's path is too long.
#pragma once

#include <filesystem>

namespace qvhost {

// The plug-in looks for its tools beside the running program and holds that program's path in 255
// bytes. Throws std::runtime_error if the path of `program`, its links resolved, is longer.
void expect_path_fits_plugin(const std::filesystem::path& program);

}  // namespace qvhost
