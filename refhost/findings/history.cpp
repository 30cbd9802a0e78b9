#include "findings/history.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>

#include "findings/storage.h"

namespace qvhost::findings {

namespace {

// The rule for a counter of drives that grows.
struct GrowthRow {
    std::string_view field;
    const char* rule;
    const char* words;
};
constexpr auto kGrowth = std::to_array<GrowthRow>({
    {"media_errors", "drive_media_errors_grow", "media errors"},
    {"other_errors", "drive_other_errors_grow", "other errors"},
});

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

void judge_growth(const inventory::Inventory& inventory, const std::vector<GrownCounter>& grown,
                  Collector& findings) {
    for (const auto& [entity, growth] : grown) {
        const auto place = static_cast<std::size_t>(entity.number) - 1;
        const auto& field = growth.field;
        const auto* const row =
            std::find_if(kGrowth.begin(), kGrowth.end(),
                         [&](const GrowthRow& one) { return one.field == field; });
        if (entity.kind != "drives" || row == kGrowth.end() || place >= inventory.drives.size())
            continue;
        const auto by = static_cast<double>(growth.now - growth.before);
        if (by <= findings.rule(row->rule).threshold) continue;
        const auto& drive = inventory.drives[place];
        findings.add(subject_of(inventory, drive), row->rule,
                     std::string(row->words) + " grew from " + std::to_string(growth.before) +
                         " to " + std::to_string(growth.now) + " since " + growth.since,
                     place_of(drive, field));
    }
}

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
