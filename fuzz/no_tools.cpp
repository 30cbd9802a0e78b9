#include "no_tools.h"

#include "runner/process.h"

namespace fuzz {

std::string printed;

}  // namespace fuzz

namespace runner {

int run(const std::string&, TimeoutKind) { return 0; }

std::optional<std::string> output_of(const std::string&, std::size_t most) {
    return fuzz::printed.substr(0, most);
}

}  // namespace runner
