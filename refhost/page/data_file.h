#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace qvhost::page {

// A script that hands a JSON text to the page: a page opened from disk may load scripts, but not
// fetch files. Bytes that are not UTF-8 become U+FFFD.
std::string data_script(const char* function, const nlohmann::ordered_json& value);

}  // namespace qvhost::page
