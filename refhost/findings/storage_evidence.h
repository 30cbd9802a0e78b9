// Whether every controller of the machine was asked and its answer read whole.
#pragma once

#include "findings/finding.h"
#include "inventory/survey.h"

namespace qvhost::findings {

// Adds to `health` what storage is judged by and what is missing. Returns whether there is evidence that
// there is no storage to judge.
bool weigh_storage(const inventory::Survey& survey, Health& health);

}  // namespace qvhost::findings
