// In place of the runner of tools: every tool has run already and left its capture.
#include "runner/process.h"

namespace runner {

int run(const std::string&, TimeoutKind) { return 0; }

std::optional<std::string> output_of(const std::string&, std::size_t) { return ""; }

}  // namespace runner
