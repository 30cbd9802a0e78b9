// What is wrong with a JSON text, for people who write one.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace qvhost {

// "line 3, column 9: no JSON: unexpected ','"
std::string json_words(const nlohmann::json::exception& error);

}  // namespace qvhost
