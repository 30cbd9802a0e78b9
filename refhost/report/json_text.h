// Writes JSON. Hidden characters (text/hidden.h) are escaped, which means the same, so that a terminal may show it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace qvhost {

// Appends the text as a JSON string, its quotes included. Bytes that are not UTF-8 become U+FFFD.
void put_json_text(std::string_view text, std::string& json);

// The value as JSON, on one line or with so many blanks for each level. Bytes that are not UTF-8 become U+FFFD.
std::string json_line(const nlohmann::ordered_json& json, int indent = -1);

// The text, in which bytes that are not UTF-8 are U+FFFD.
std::string as_utf8(std::string_view text);

}  // namespace qvhost
