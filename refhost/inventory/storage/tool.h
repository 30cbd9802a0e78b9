// Which tool's numbers an entity goes by: controller 1 of one tool is not controller 1 of another.
#pragma once

#include <string>
#include <tuple>
#include <vector>

#include "inventory/reading.h"

namespace qvhost::inventory {

// While it lives, entities are added; all of them get the tool's name.
class NumbersOf {
public:
    NumbersOf(Reading& reading, std::string tool)
        : lists_(reading.found.controllers, reading.found.batteries, reading.found.enclosures,
                 reading.found.volumes, reading.found.drives, reading.found.volume_members,
                 reading.found.topology),
          tool_(std::move(tool)) {
        std::apply([&](const auto&... list) { before_ = {list.size()...}; }, lists_);
    }
    ~NumbersOf() {
        auto before = before_.begin();
        std::apply([&](auto&... list) { (name(list, *before++), ...); }, lists_);
    }
    NumbersOf(const NumbersOf&) = delete;
    NumbersOf& operator=(const NumbersOf&) = delete;

private:
    template <class Entity>
    void name(std::vector<Entity>& list, std::size_t first) {
        for (std::size_t i = first; i < list.size(); ++i) list[i].tool = tool_;
    }

    std::tuple<std::vector<Controller>&, std::vector<Battery>&, std::vector<Enclosure>&,
               std::vector<Volume>&, std::vector<Drive>&, std::vector<VolumeMember>&,
               std::vector<TopologyRow>&>
        lists_;
    std::vector<std::size_t> before_;
    std::string tool_;
};

}  // namespace qvhost::inventory
