// Throw-away directories that a program left when it was killed.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "files/descriptor.h"

namespace qvhost {

// Directories NAME-XXXXXX, and all that may lie in them.
struct ThrowAway {
    std::string name;
    std::vector<std::string> contents;
};

// Those of qvhost. The page that `open` makes is none: the browser needs it when the program has ended.
const std::vector<ThrowAway>& throw_away_directories();

// Holds a throw-away directory as long as this process, or one that it starts and that keeps the descriptor,
// lives.
Descriptor hold_directory(const std::filesystem::path& directory);

// Removes those directories in `parent` that nobody uses any more: this user's own with mode 0700, ten minutes
// old at least, with nothing in them but their contents, held by no process, and with no process that runs a
// program in them. `parent` must be a directory in which no other user can replace them. What is not certain
// stays.
void remove_leftovers(const std::filesystem::path& parent,
                      const std::vector<ThrowAway>& kinds = throw_away_directories());

}  // namespace qvhost
