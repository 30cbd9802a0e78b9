// `qvhost replay`: a collection from a recorded server.
#pragma once

#include <filesystem>

#include "qvhost/base/options.h"
#include "qvhost/replay/machine.h"

namespace qvhost {

// Collects from a recorded server as if it were this machine. Returns the exit status.
int replay(const std::filesystem::path& machine, CollectOptions options);
int replay(const Machine& machine, CollectOptions options, bool summary);

}  // namespace qvhost
