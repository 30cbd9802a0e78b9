// Findings and health as tables of a store: `findings`, `finding_evidence`, `finding_growth`, `health`,
// `health_captures` (what `ok` rests on) and `health_missing` (what `unknown` lacks).
#pragma once

#include <vector>

#include "findings/finding.h"
#include "store/store.h"
#include "store/typed_table.h"

namespace qvhost {

void write_verdict(Store& store, const findings::Verdict& verdict);

// The tables that write_verdict() writes, without what it says of earlier reports.
std::vector<DeclaredTypedTable> verdict_tables();

// What write_verdict() wrote. Words of a store of somebody else that are none of ours are left out.
findings::Verdict read_verdict(const Store& store);

}  // namespace qvhost
