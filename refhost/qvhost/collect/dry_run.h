// `--dry-run`: what a collection would do.
#pragma once

#include "qvhost/base/options.h"
#include "qvhost/collect/stage.h"

namespace qvhost {

// Prints what a collection would do: where it writes, its limits, its modules and
// tables. Nothing is run and nothing is written. Throws as the collection would.
void print_plan(CollectOptions options, const Stage& stage);

}  // namespace qvhost
