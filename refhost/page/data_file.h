// Data files of the page: scripts, since a page opened from disk may not fetch files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qvhost::page {

// Of a table or of the events: small enough for the page to read without a pause.
// A file that has so many bytes has no further row.
inline constexpr std::size_t kRowsAFile = 10'000;
inline constexpr std::size_t kBytesAFile = std::size_t{4} << 20;

// A script that calls the page's function with a JSON text.
std::string data_script(const char* function, std::string_view json);

}  // namespace qvhost::page
