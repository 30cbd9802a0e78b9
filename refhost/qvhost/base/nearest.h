// Which of the names that there are somebody probably meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvhost {

// The name that a mistyped word is nearest to; empty: none is near.
std::string nearest(std::string_view word, const std::vector<std::string>& names);

// "; did you mean NAME?", or nothing.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& names);

}  // namespace qvhost
