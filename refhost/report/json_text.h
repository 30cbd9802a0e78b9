// Writes texts as JSON strings, which are UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace qvhost {

// Appends the text as a JSON string, its quotes included. Bytes that are not UTF-8 become U+FFFD.
void put_json_text(std::string_view text, std::string& json);

// The text, in which bytes that are not UTF-8 are U+FFFD.
std::string as_utf8(std::string_view text);

}  // namespace qvhost
