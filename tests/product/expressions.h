// Regular expressions, compiled in one place: a file that includes <regex> takes seconds longer.
#pragma once

#include <string>

namespace test {

// The text with `by` for each part that matches; "$1" in it is the first group.
std::string replaced(const std::string& text, const std::string& expression, const std::string& by);

bool has_match(const std::string& text, const std::string& expression);

}  // namespace test
