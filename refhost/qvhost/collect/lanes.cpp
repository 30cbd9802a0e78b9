#include "qvhost/collect/lanes.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>

#include "qvhost/base/environment.h"
#include "qvhost/base/log_dir.h"
#include "qvhost/collect/selection.h"

namespace qvhost {

namespace {

using NameSet = std::set<std::string>;

struct Part {
    Lane modules;
    NameSet uses;  // devices, tools and captures
};

// Tools that ask the same device are one.
std::string device_of(const std::string& tool) {
    return is_bmc_tool(tool) ? "BMC" : "tool " + tool;
}

// What the module's tables are filled with; nothing: that is not known.
std::optional<NameSet> used_by(const OfferedModule& module,
                               const std::vector<DeclaredTable>& declared) {
    NameSet uses;
    for (const auto& id : module.tables) {
        const auto table = std::find_if(declared.begin(), declared.end(),
                                        [&](const DeclaredTable& one) { return one.id == id; });
        if (table == declared.end()) return std::nullopt;
        if (!table->tool.empty()) uses.insert(device_of(table->tool));
        if (!table->capture.empty()) uses.insert("capture " + table->capture);
    }
    return uses;
}

bool share(const NameSet& a, const NameSet& b) {
    return std::any_of(a.begin(), a.end(), [&](const auto& name) { return b.contains(name); });
}

void join_to(Part& part, Part& other) {
    std::move(other.modules.begin(), other.modules.end(), std::back_inserter(part.modules));
    part.uses.merge(other.uses);
}

}  // namespace

std::vector<Lane> lanes_of(const Offer& offer, const CollectOptions& options,
                           const std::vector<DeclaredTable>& declared) {
    bool one_lane = options.serial || options.replayed || !options.also.empty();
    std::vector<Part> parts;
    if (options.profile == kHealthProfile) return {Lane()};
    for (const auto& [place, tables] : select_modules(offer, options)) {
        auto uses = used_by(offer[place], declared);
        one_lane = one_lane || !uses;
        Part next{{{offer[place].name, offer[place].display}}, std::move(uses).value_or(NameSet())};
        // The first part that it shares something with gets it, and all that lies between.
        auto with = std::find_if(parts.begin(), parts.end(),
                                 [&](const Part& part) { return share(part.uses, next.uses); });
        if (with == parts.end() && !parts.empty() &&
            (next.uses.empty() || parts.back().uses.empty() || parts.size() == kMostLanes))
            with = std::prev(parts.end());
        if (with == parts.end()) {
            parts.push_back(std::move(next));
            continue;
        }
        for (auto part = std::next(with); part != parts.end(); ++part) join_to(*with, *part);
        join_to(*with, next);
        parts.erase(std::next(with), parts.end());
    }
    std::vector<Lane> lanes;
    for (auto& part : parts) {
        if (one_lane && !lanes.empty()) {
            std::move(part.modules.begin(), part.modules.end(), std::back_inserter(lanes.front()));
        } else {
            lanes.push_back(std::move(part.modules));
        }
    }
    return lanes.empty() ? std::vector<Lane>{Lane()} : lanes;
}

}  // namespace qvhost
