// Whether a place can be trusted by a user who may be root.
#pragma once

#include <filesystem>
#include <string>

namespace qvhost {

struct JudgedPlace {
    std::filesystem::path path;  // without links, as far as it is there
    std::string refusal;         // why others could reach into it; empty: they cannot
};

// Walks to a directory, an absolute path, and judges each part of the way as it was opened, one within the
// other and through no link: others cannot write to it, by its mode or its access control list, and it belongs
// to the user or to root, unless it protects each user's entries (mode 1777). Links on the way are the
// user's or root's. The directory itself is the user's, is no link, and contains files and directories
// and nothing else. What is not there yet is no reason to refuse it.
//
// Nobody but the user and root can change where the path that is returned leads to.
JudgedPlace judge_private(const std::filesystem::path& directory);

// Why another user could have written a program, or a program in a directory; empty: all belong to the
// user or to root, and others cannot write to them.
std::string why_not_trusted(const std::filesystem::path& path);

// The same of the file or directory alone.
std::string why_not_trusted_itself(const std::filesystem::path& path);

// Why another user could have written the program or put another file in its place; empty: it, and every
// directory on the way to it, belongs to the user or to root, and others cannot write to them.
std::string why_program_not_trusted(const std::filesystem::path& program);

}  // namespace qvhost
