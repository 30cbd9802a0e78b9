// Tools that tell something by their exit code.
#pragma once

#include <string_view>

namespace qvhost::inventory {

// Whether the command has printed all that it should, though it ended with this outcome: "exit code 1".
bool ran_to_its_end(std::string_view command, std::string_view outcome);

}  // namespace qvhost::inventory
