#include "findings/about.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>

#include "inventory/ipmi/join.h"

namespace qvhost::findings {

namespace {

using inventory::Drive;
using inventory::Event;
using inventory::Integer;
using inventory::Volume;

bool is_of_controller(const Event& event, const Integer& controller) {
    return controller && event.source == "controller " + std::to_string(*controller);
}

// "PD 0c(e0xfc/s4)": the drive in slot 4 of enclosure 252.
bool names(const std::string& subject, const Drive& drive) {
    unsigned device = 0, enclosure = 0, slot = 0;
    if (std::sscanf(subject.c_str(), "PD %x(e0x%x/s%u)", &device, &enclosure, &slot) != 3)
        return false;
    return drive.enclosure == std::int64_t{enclosure} && drive.slot == std::int64_t{slot};
}

// "VD 01/2": its target is 2, which is the number that lists show.
bool names(const std::string& subject, const Volume& volume) {
    unsigned place = 0, number = 0;
    return std::sscanf(subject.c_str(), "VD %x/%u", &place, &number) == 2 &&
           volume.number == std::int64_t{number};
}

template <class Entity>
const Entity* at(const std::vector<Entity>& entities, std::int64_t number) {
    return number >= 1 && number <= static_cast<std::int64_t>(entities.size())
               ? &entities[static_cast<std::size_t>(number - 1)]
               : nullptr;
}

template <class Entity>
bool tells_of(const Event& event, const Entity* entity) {
    return entity && is_of_controller(event, entity->controller) && names(*event.subject, *entity);
}

}  // namespace

bool EventsAbout::tells(const Event& event) const {
    const auto* const sensor =
        event.source == "bmc" ? inventory::sensor_of_event(*inventory_, *event.subject) : nullptr;
    return std::any_of(entities_.begin(), entities_.end(), [&](const EntityRef& entity) {
        if (entity.kind == "sensors")
            return sensor && sensor == at(inventory_->sensors, entity.number);
        if (entity.kind == "drives") return tells_of(event, at(inventory_->drives, entity.number));
        if (entity.kind == "volumes")
            return tells_of(event, at(inventory_->volumes, entity.number));
        return false;
    });
}

bool EventsAbout::operator()(const Event& event) {
    if (!event.subject || entities_.empty()) return false;
    const auto [found, is_new] = known_.try_emplace({event.source, *event.subject}, false);
    if (is_new) found->second = tells(event);
    return found->second;
}

}  // namespace qvhost::findings
