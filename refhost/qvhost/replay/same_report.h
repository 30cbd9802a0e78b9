// Whether a replay gave what the original did.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qvhost {

// What differs between the reports of two log directories, for people: commands, tables, records, inventory, findings,
// health and the machine. Times are not compared; places are, by their role. Empty: nothing differs.
std::vector<std::string> differences(const std::filesystem::path& original,
                                     const std::filesystem::path& replayed);

}  // namespace qvhost
