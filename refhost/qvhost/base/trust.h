// Whether a place can be trusted by a user who may be root.
#pragma once

#include <filesystem>
#include <string>

namespace qvhost {

// Why other users could write into the directory or replace it; empty: they cannot. The directory must
// belong to the user, must be no link, and others must not be able to write to it. The same holds for
// each directory above it, unless that protects each user's entries (mode 1777). It may contain files
// and directories and nothing else.
std::string why_not_private(const std::filesystem::path& directory);

// Why another user could have written a program, or a program in a directory; empty: all belong to the
// user or to root, and others cannot write to them.
std::string why_not_trusted(const std::filesystem::path& path);

}  // namespace qvhost
