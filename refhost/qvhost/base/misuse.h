// What the user asked for and cannot be had: the exit status is that of a wrong command line.
#pragma once

#include <stdexcept>

namespace qvhost {

struct Misuse : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

}  // namespace qvhost
