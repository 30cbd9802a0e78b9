// The file with a site's own rules (findings/rules_file.h), as --rules names it.
#pragma once

#include <filesystem>
#include <string>

#include "findings/rules.h"

namespace qvhost {

// The text of the file, whose every line is right. Throws std::runtime_error naming the file, and the line that
// is wrong.
std::string read_rules_file(const std::filesystem::path& file);

// The rules in such a text, as they hold today.
findings::Rules rules_in(const std::string& text);

}  // namespace qvhost
