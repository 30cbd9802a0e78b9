// A reader of RFC 4180, as strict as it is naive.
#pragma once

#include <string>
#include <vector>

namespace test {

// Throws std::runtime_error on a text that is not CSV.
std::vector<std::vector<std::string>> read_csv(const std::string& text);

}  // namespace test
