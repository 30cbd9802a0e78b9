// Data files of the page: scripts, since a page opened from disk may not fetch files.
#pragma once

#include <string>
#include <string_view>

namespace qvhost::page {

// A script that calls the page's function with a JSON text.
std::string data_script(const char* function, std::string_view json);

}  // namespace qvhost::page
