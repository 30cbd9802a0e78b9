// What a shell command line says of itself: the tool that it starts, and the files that it writes.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

// The word that begins there, its quotes and escapes removed.
std::string shell_word(std::string_view command, std::size_t begin = 0);

// What stands behind the first word.
std::string_view behind_first_word(std::string_view command);

// The command without its redirections at the end: "ipmitool sensor" of "ipmitool sensor >FILE 2>&1".
std::string_view without_redirections(std::string_view command);

// The files behind ">", "1>" and "2>", as they are written there.
std::vector<std::string> redirections(std::string_view command);

// What a command names that runs in a directory.
struct NamedInDirectory {
    std::vector<std::string> files;  // that the shell writes there: "a.txt" of ">/DIR/a.txt"
    bool itself = false;  // whether a word of it is the directory, where it may then put any file
};
NamedInDirectory named_in_directory(std::string_view command,
                                    const std::filesystem::path& directory);

}  // namespace runner
