// Throw-away directories that a program left when it was killed.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "files/descriptor.h"

namespace qvhost {

// Holds a throw-away directory as long as this process, or one that it starts and that keeps the descriptor,
// lives.
Descriptor hold_directory(const std::filesystem::path& directory);

// Removes the directories NAME-XXXXXX in `parent` that nobody uses any more: this user's own with mode 0700, ten
// minutes old at least, with nothing in them but `contents`, held by no process, and with no process that runs
// a program in them. `parent` must be a directory in which no other user can replace them. What is not
// certain stays.
void remove_leftovers(const std::filesystem::path& parent, const std::vector<std::string>& names,
                      const std::vector<std::string>& contents);

}  // namespace qvhost
