// The report's views, from a store that has all records.
#pragma once

#include "qvhost/log_dir.h"
#include "store/store.h"

namespace qvhost {

// Completes the store with what the captures and the command log tell, and writes the views that
// people and programs read: report.json and the page.
void write_views(Store& store, const LogDir& dir);

}  // namespace qvhost
