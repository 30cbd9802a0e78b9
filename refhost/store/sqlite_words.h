// What SQLite's errors mean for a store, and what one can do.
#pragma once

#include <string>

namespace qvhost::store {

// `code` is SQLite's result code, `told` its own text, which stays where the code tells nothing.
std::string sqlite_words(int code, const std::string& told);

}  // namespace qvhost::store
