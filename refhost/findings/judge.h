// The one judgement that every view shows.
#pragma once

#include "findings/events.h"
#include "findings/finding.h"
#include "findings/health.h"
#include "findings/rules.h"
#include "inventory/survey.h"

namespace qvhost::findings {

// `events` has taken every event of the survey.
Verdict judge(const inventory::Survey& survey, EventJudge& events,
              const Circumstances& circumstances, const Rules& rules = built_in_rules());

}  // namespace qvhost::findings
