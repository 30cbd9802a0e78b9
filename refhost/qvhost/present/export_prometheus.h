// A report as metrics, for the textfile collector of node_exporter.
#pragma once

#include <iosfwd>
#include <set>
#include <string>
#include <vector>

#include "store/store.h"

namespace qvhost {

// Names and labels are fixed; values have the unit of their name. Without time stamps. `tables` are those whose
// metrics are written; none: all, and those of the collection itself.
void write_prometheus(const Store& store, std::ostream& out, const std::set<std::string>& tables);

// The tables of which there are metrics.
std::vector<std::string> tables_with_metrics();

}  // namespace qvhost
