// Command lines. Each is written out whole beside the parser of its output, as the shell will get
// it, with these places to fill in:
//     {P}  the program directory, ending with "/"
//     {L}  the log directory, ending with "/"
//     {x}  the build of a tool: "x32" or "x64"
//     {n}  a controller number
#pragma once

#include <string>
#include <string_view>

namespace marlox::repository::capture {

struct Fill {
    std::string_view program_dir;
    int bits = 64;  // the word size; any but 32 takes the "x64" build
    int controller = 0;
};

// The command with its places filled in. A directory reaches the shell as that directory, also one
// with a single quote in its name; every other name stands in the command as it is.
std::string expand(std::string_view command, const Fill& fill);

// The path of a file in the host's log directory.
std::string log_path(std::string_view file);

}  // namespace marlox::repository::capture
