// `qvhost replay`: a collection from a recorded server.
#pragma once

#include <filesystem>

#include "qvhost/base/options.h"

namespace qvhost {

// Collects from a recorded server as if it were this machine. Returns the exit status.
int replay(const std::filesystem::path& machine, CollectOptions options);

}  // namespace qvhost
