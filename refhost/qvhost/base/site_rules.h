// The file with a site's own rules (findings/rules_file.h), as --rules names it.
#pragma once

#include <filesystem>
#include <string>

#include "findings/rules.h"
#include "store/store.h"

namespace qvhost {

// The text of the file, whose every line is right. Throws std::runtime_error naming the file, and the line that
// is wrong.
std::string read_rules_file(const std::filesystem::path& file);

// The rules in such a text, as they hold today.
findings::Rules rules_in(const std::string& text);

// Those by which the store's report was judged. They were right when it began: if they are not, the store was damaged,
// and it is the built-in ones.
findings::Rules rules_of(const Store& store);

}  // namespace qvhost
