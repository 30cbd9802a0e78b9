// In place of the runner of tools: every tool has run already and left its capture.
#include "run/process.h"

namespace marlox::repository::capture {

int run(const std::string&, TimeoutKind) { return 0; }

std::optional<std::string> output_of(const std::string&, std::size_t) { return ""; }

}  // namespace marlox::repository::capture
