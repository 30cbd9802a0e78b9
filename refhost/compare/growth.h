// Which counters have grown between two reports of a server.
#pragma once

#include <string>
#include <vector>

#include "compare/compare.h"
#include "findings/history.h"

namespace qvhost::compare {

// Of the entities of `to` that `from` has as well. Nothing of two machines.
std::vector<findings::GrownCounter> grown_counters(const Side& from, const Side& to);

}  // namespace qvhost::compare
