// Writes texts as JSON strings.
#pragma once

#include <string>
#include <string_view>

namespace qvhost {

// Appends the text as a JSON string, its quotes included. Bytes that are not UTF-8 become U+FFFD.
void put_json_text(std::string_view text, std::string& json);

}  // namespace qvhost
