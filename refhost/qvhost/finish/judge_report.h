// Reads the captures of a collection into an inventory, judges it, and keeps both in the store.
#pragma once

#include <vector>

#include "findings/judge.h"
#include "findings/rules.h"
#include "inventory/survey.h"
#include "qvhost/base/log_dir.h"
#include "store/store.h"

namespace qvhost {

// What the captures of a collection tell. The inventory and the events are in the store then.
inventory::Survey read_report(Store& store, const LogDir& dir,
                              const std::vector<CommandInfo>& commands,
                              findings::EventJudge& events);

// The store's status and the time at which it was finished must be set.
void judge_report(Store& store, const LogDir& dir, const std::vector<CommandInfo>& commands,
                  const inventory::Survey& survey, findings::EventJudge& events);

// What other rules say of the captures of a finished report. Nothing is written.
findings::Verdict judge_again(const Store& store, const LogDir& dir, const findings::Rules& rules);

}  // namespace qvhost
