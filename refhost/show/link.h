// Texts by which modules link to a capture.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvhost {

// The capture's name, if the text is such a link and nothing else:
//     "\n<pre>\n<a href='../pdlist.txt' target='_blank'>../pdlist.txt</a>\n<pre>\n"
std::optional<std::string> linked_capture(std::string_view text);

}  // namespace qvhost
