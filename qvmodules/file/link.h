// The one text that points at a raw capture from a report page.
#pragma once

#include <string>

namespace marlox::repository::capture {

// The pages lie one directory below the captures. The second "<pre>" is an opening tag as the first.
inline std::string link_text(const std::string& file) {
    const std::string target = "../" + file;
    return "\n<pre>\n<a href='" + target + "' target='_blank'>" + target + "</a>\n<pre>\n";
}

}  // namespace marlox::repository::capture
