// What failed, in words for people: exceptions of libraries say it in their own language.
#pragma once

#include <exception>
#include <string>

namespace qvhost {

// "PATH: REASON" of an error of the file system, else what the exception says.
std::string words_of(const std::exception& failure);

}  // namespace qvhost
