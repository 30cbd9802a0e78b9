// A report as metrics, for the textfile collector of node_exporter.
#pragma once

#include <iosfwd>

#include "store/store.h"

namespace qvhost {

// Names and labels are fixed; values have the unit of their name. Without time stamps.
void write_prometheus(const Store& store, std::ostream& out);

}  // namespace qvhost
