// The page's fixed parts, bundled by build.mjs and held in the program, which so stays one file.
#pragma once

#include <string_view>

namespace qvhost::page {

std::string_view html();  // with "@NONCE@" where the nonce of the grid's styles belongs
std::string_view script();
std::string_view style();

}  // namespace qvhost::page
