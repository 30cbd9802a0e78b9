// Gathers findings: what is said of one thing becomes one finding.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "findings/finding.h"
#include "findings/rules.h"
#include "inventory/fields.h"

namespace qvhost::findings {

// The thing that a finding is about.
struct Subject {
    std::string key;    // for the finding's id: serial, else slot or name
    std::string words;  // for people
    std::vector<EntityRef> entities = {};
};

// Something that a rule says of a thing.
struct Remark {
    const Rule* rule;
    std::string says;
    std::vector<Place> evidence;
    Severity severity;  // the rule's own, or less
};

class Collector {
public:
    // The rules must outlive it.
    explicit Collector(const Rules& rules = built_in_rules()) : rules_(&rules) {}

    const Rule& rule(std::string_view name) const { return rules_->rule(name); }

    // Subjects of one key are one; the first one's words are told.
    void add(const Subject& subject, Remark remark);
    void add(const Subject& subject, std::string_view rule_name, const std::string& says,
             const Place& place);

    // A finding that stands for itself: an event's. Those of one id are counted together.
    void add(Finding finding);

    // Whether this rule said something of a thing.
    bool has(const Rule& rule) const;
    // Whether something there is a warning or worse now; events are of the past.
    bool has_state(Subsystem subsystem) const;
    // Whether anything but the collection itself is a warning or worse, events as well.
    bool has_any_of_the_machine() const;

    // One finding for each thing and subsystem, the worst first. Of several remarks the worst names
    // the finding; the first in the table of rules among equals. One that is acknowledged is a notice.
    std::vector<Finding> take();

private:
    struct Thing {
        Subject subject;
        std::vector<Remark> remarks;
    };
    template <class Test>
    bool has_remark(Test test) const {
        return std::any_of(things_.begin(), things_.end(), [&](const Thing& thing) {
            return std::any_of(thing.remarks.begin(), thing.remarks.end(), test);
        });
    }

    const Rules* rules_;
    std::vector<Thing> things_;                  // by subsystem and key, in order
    std::map<std::string, std::size_t> places_;  // of things_
    std::vector<Finding> ready_;
    std::map<std::string, std::size_t> ready_places_;  // by id
};

// `entity` is one of the inventory's own.
template <class Entity>
EntityRef ref_to(const inventory::Inventory& inventory, const Entity& entity) {
    const auto& kind = inventory::kind_of<Entity>();
    return {kind.name, &entity - (inventory.*kind.list).data() + 1};
}

// The id of a finding of this rule on this thing: letters, digits and "._:-" alone, so that it can
// stand in a rules file and a label.
std::string finding_id(const Rule& rule, const std::string& key);

}  // namespace qvhost::findings
