// Reads the captures of a collection into an inventory, judges it, and keeps both in the store.
#pragma once

#include <vector>

#include "findings/finding.h"
#include "findings/rules.h"
#include "inventory/inventory.h"
#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

// The store's status and the time at which it was finished must be set. Returns what was read.
inventory::Inventory judge_report(Store& store, const LogDir& dir,
                                  const std::vector<CommandInfo>& commands);

// What other rules say of the captures of a finished report. Nothing is written.
findings::Verdict judge_again(const Store& store, const LogDir& dir, const findings::Rules& rules);

}  // namespace qvhost
