#include "findings/collector.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qvhost::findings {

std::string finding_id(const Rule& rule, const std::string& key) {
    std::string id = std::string(rule.name) + ":";
    for (const char c : key) {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                           (c >= 'a' && c <= 'z') || c == '.' || c == '_' || c == ':' || c == '-';
        id += plain ? c : '_';
    }
    return id;
}

namespace {

template <class Value>
void add_once(std::vector<Value>& values, const Value& value) {
    if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
}

}  // namespace

void Collector::add(const Subject& subject, Remark remark) {
    const auto whole_key = std::string(word(remark.rule->subsystem)) + " " + subject.key;
    const auto [place, is_new] = places_.try_emplace(whole_key, things_.size());
    if (is_new) things_.push_back({subject, {}});
    auto& thing = things_[place->second];
    for (const auto& entity : subject.entities) add_once(thing.subject.entities, entity);
    thing.remarks.push_back(std::move(remark));
}

void Collector::add(const Subject& subject, std::string_view rule_name, const std::string& says,
                    const Place& place) {
    const Rule& found = rule(rule_name);
    add(subject, Remark{&found, says, {place}, found.severity});
}

void Collector::add(Finding finding) {
    const auto [place, is_new] = ready_places_.try_emplace(finding.id, ready_.size());
    if (is_new) {
        ready_.push_back(std::move(finding));
        return;
    }
    auto* const same = &ready_[place->second];
    same->count += finding.count;
    same->severity = std::min(same->severity, finding.severity);
    if (!same->first_seen || (finding.first_seen && *finding.first_seen < *same->first_seen))
        same->first_seen = finding.first_seen;
    if (finding.time && (!same->time || *same->time < *finding.time)) {
        same->time = finding.time;
        same->says = finding.says;
    }
    same->evidence.insert(same->evidence.end(), finding.evidence.begin(), finding.evidence.end());
    for (const auto& entity : finding.entities) add_once(same->entities, entity);
}

bool Collector::has(const Rule& rule) const {
    return has_remark([&](const Remark& one) { return one.rule == &rule; });
}

bool Collector::has_state(Subsystem subsystem) const {
    return has_remark([&](const Remark& one) {
        return one.rule->subsystem == subsystem && one.severity <= Severity::warning;
    });
}

bool Collector::has_any_of_the_machine() const {
    return has_remark([](const Remark& one) {
               return one.rule->subsystem != Subsystem::collection &&
                      one.severity <= Severity::warning;
           }) ||
           std::any_of(ready_.begin(), ready_.end(),
                       [](const Finding& one) { return one.severity <= Severity::warning; });
}

std::vector<Finding> Collector::take() {
    std::vector<Finding> all;
    for (auto& thing : things_) {
        const auto& remarks = thing.remarks;
        const auto worst =
            std::min_element(remarks.begin(), remarks.end(), [](const Remark& a, const Remark& b) {
                return std::pair(a.severity, a.rule) < std::pair(b.severity, b.rule);
            });
        Finding finding;
        finding.id = finding_id(*worst->rule, thing.subject.key);
        finding.rule = worst->rule->name;
        finding.severity = worst->severity;
        finding.subsystem = worst->rule->subsystem;
        finding.subject = thing.subject.words;
        finding.entities = std::move(thing.subject.entities);
        const auto tell = [&](const Remark& remark) {
            if (("; " + finding.says + ";").find("; " + remark.says + ";") == std::string::npos)
                finding.says += (finding.says.empty() ? "" : "; ") + remark.says;
            for (const auto& place : remark.evidence) add_once(finding.evidence, place);
        };
        tell(*worst);
        for (const auto& remark : remarks) {
            if (&remark != &*worst) tell(remark);
        }
        all.push_back(std::move(finding));
    }
    // What a thing says of itself stands before what was once logged of it.
    std::move(ready_.begin(), ready_.end(), std::back_inserter(all));
    ready_.clear();
    things_.clear();
    places_.clear();
    ready_places_.clear();
    for (auto& finding : all) {
        if (const auto* const known = rules_->acknowledged(finding.id)) {
            finding.severity = Severity::notice;
            finding.says += "; " + words_of(*known);
            finding.acknowledged = *known;
        }
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Finding& a, const Finding& b) { return a.severity < b.severity; });
    return all;
}

}  // namespace qvhost::findings
