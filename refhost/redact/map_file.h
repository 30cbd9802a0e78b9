// The file that tells which replacement stands for which value. Whoever has it can undo a redaction.
#pragma once

#include <filesystem>
#include <string>

#include "redact/substitutes.h"

namespace qvhost::redact {

// Those of the file; new ones if there is none. Throws std::runtime_error naming the file if others can read it, if
// it is no file of its owner, or no map.
Substitutes read_map(const std::filesystem::path& file);

// Throws std::runtime_error if the file lies below the directory, which is handed on: "the report".
void expect_map_outside(const std::filesystem::path& file, const std::filesystem::path& directory,
                        const std::string& what);

// Replaces the file (mode 0600). Throws std::system_error naming it.
void write_map(const std::filesystem::path& file, const Substitutes& substitutes);

}  // namespace qvhost::redact
