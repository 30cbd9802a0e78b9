// What a collection warns of on standard error, a line each.
#pragma once

#include <iostream>
#include <string>

#include "show/visible.h"

namespace qvhost {

inline void warn(const std::string& text) { std::cerr << "qvhost: " << one_line(text) << '\n'; }

}  // namespace qvhost
