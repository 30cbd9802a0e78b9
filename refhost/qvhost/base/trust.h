// Whether a place can be trusted by a user who may be root.
#pragma once

#include <filesystem>
#include <string>

namespace qvhost {

// Why others could put something of theirs into the directory, or something else in its place; empty:
// they cannot. It must be the user's own, no link, closed to other writers, and so must be the way to
// it, but for directories that protect each user's entries (mode 1777). In it are files and directories
// and nothing else.
std::string why_not_private(const std::filesystem::path& directory);

// Why a program, or a directory of programs, could be another user's work; empty: it is the user's own
// or root's. Of a directory each entry counts.
std::string why_not_trusted(const std::filesystem::path& path);

}  // namespace qvhost
