#pragma once

#include <string>
#include <string_view>

namespace qvhost::page {

// A script that hands a JSON text to the page: a page opened from disk may load scripts, but not
// fetch files.
std::string data_script(const char* function, std::string_view json);

}  // namespace qvhost::page
