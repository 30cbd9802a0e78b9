// The text that links from a report page to a raw capture.
#pragma once

#include <string>

namespace marlox::repository::capture {

// The pages lie one directory below the captures. The second "<pre>" is an opening tag too; hosts
// compare the text byte for byte.
inline std::string link_text(const std::string& file) {
    const std::string target = "../" + file;
    return "\n<pre>\n<a href='" + target + "' target='_blank'>" + target + "</a>\n<pre>\n";
}

}  // namespace marlox::repository::capture
