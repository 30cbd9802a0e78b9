// Shell scripts that take a tool's place: how their words are quoted, and how they are written.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qvhost {

// The text as one word of a shell's command line: in single quotes.
std::string shell_quoted(const std::string& text);

// Writes a new script that its owner alone can read, write and run. Throws std::system_error naming the
// file.
void write_script(const std::filesystem::path& file, std::string_view script);

}  // namespace qvhost
