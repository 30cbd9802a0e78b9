#include "findings/history.h"

#include <algorithm>

namespace qvhost::findings {

namespace {

// Whether the run could tell that there is nothing of the kind.
bool could_tell(const Verdict& verdict, Subsystem subsystem) {
    return std::any_of(verdict.health.begin(), verdict.health.end(), [&](const Health& one) {
        return one.subsystem == subsystem && one.health != HealthWord::unknown &&
               one.missing.empty();
    });
}

// A finding whose beginning is still looked for.
struct Open {
    Finding* finding;
    std::string since;  // the start of the earliest run that has it
};

const Finding* find(const Verdict& verdict, const std::string& id) {
    const auto found = std::find_if(verdict.findings.begin(), verdict.findings.end(),
                                    [&](const Finding& one) { return one.id == id; });
    return found == verdict.findings.end() ? nullptr : &*found;
}

// The earlier one of the runs' time and the event's, unless the finding was gone after the event.
void settle(const Open& open, const std::string& gone_at) {
    auto& seen = open.finding->first_seen;
    if (!seen || *seen > open.since || (!gone_at.empty() && *seen < gone_at)) seen = open.since;
}

// Looks the finding up in an earlier run. False: its beginning is found.
bool goes_on(Open& open, const EarlierVerdict& earlier) {
    if (const auto* const same = find(earlier.verdict, open.finding->id)) {
        open.since = std::min(open.since, same->first_seen.value_or(earlier.started));
        if (!same->first_seen) return true;  // an older version's: its runs tell
        settle(open, "");
        return false;
    }
    if (!could_tell(earlier.verdict, open.finding->subsystem)) return true;
    settle(open, earlier.started);
    return false;
}

}  // namespace

void add_growth(const std::vector<GrownCounter>& grown, std::vector<Finding>& findings) {
    for (auto& finding : findings) {
        for (const auto& [entity, growth] : grown) {
            if (std::find(finding.entities.begin(), finding.entities.end(), entity) !=
                finding.entities.end())
                finding.growth.push_back(growth);
        }
    }
}

void add_first_seen(const std::string& now, const NextEarlier& next_earlier,
                    std::vector<Finding>& findings) {
    std::vector<Open> open;
    for (auto& finding : findings) open.push_back({&finding, now});
    while (!open.empty()) {
        const auto earlier = next_earlier();
        if (!earlier) break;
        std::erase_if(open, [&](Open& one) { return !goes_on(one, *earlier); });
    }
    for (const auto& one : open) {
        if (one.since != now) settle(one, "");
    }
}

}  // namespace qvhost::findings
