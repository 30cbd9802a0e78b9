// Command lines. A table's declaration holds its command as the shell gets it, with these places to
// fill in:
//     {P}  the program directory, ending with "/"
//     {L}  the log directory, ending with "/"
//     {x}  the build of a tool: "x32" or "x64"
//     {n}  a controller number
#pragma once

#include <string>
#include <string_view>

namespace marlox::repository::capture {

// What is filled in.
struct Places {
    std::string_view program_dir;
    int bits = 64;  // the word size; any but 32 takes the "x64" build
    int controller = 0;
};

// The command with its places filled in. Single quotes in a directory's name are escaped for the
// shell; all other names are inserted as they are.
std::string expand(std::string_view command, const Places& places);

// The path of a file in the host's log directory.
std::string log_path(std::string_view file);

}  // namespace marlox::repository::capture
