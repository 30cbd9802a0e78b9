#include "rinstance.h"

#include <algorithm>

#include "repository/sink.h"

namespace marlox::repository {

struct RInstance::Impl {
    qvhost::Record record;
    std::size_t expected = 0;  // the property that is likely to be set next

    // The property of that id, a new one if there is none. Rows set the same properties in the same
    // order again and again, so look first at the one behind the last.
    qvhost::Property& property(const std::string& id) {
        auto& properties = record.properties;
        if (expected >= properties.size()) expected = 0;
        if (expected < properties.size() && properties[expected].id == id)
            return properties[expected++];

        const auto known = std::find_if(properties.begin(), properties.end(),
                                        [&](const auto& property) { return property.id == id; });
        expected = static_cast<std::size_t>(known - properties.begin()) + 1;
        if (known != properties.end()) return *known;
        return properties.emplace_back(qvhost::Property{id, {}, {}});
    }
};

RInstance::RInstance(const std::string& tableId, const std::string& displayName, int index)
    : impl_(new Impl{
          {tableId, displayName, index, {}}
}) {}

RInstance::~RInstance() { delete impl_; }

void RInstance::AddProperty(const std::string& id, const std::string& display,
                            const std::string& value) {
    auto& property = impl_->property(id);
    property.display = display;
    // Assign to the text that is there, whose memory is mostly large enough.
    if (auto* text = std::get_if<std::string>(&property.value)) {
        *text = value;
    } else {
        property.value = value;
    }
}

void RInstance::AddProperty(const std::string& id, const std::string& display, int value) {
    auto& property = impl_->property(id);
    property.display = display;
    property.value = value;
}

void RInstance::AddToRepository(RRepository& repository) const {
    repository.impl().add(impl_->record);
}

}  // namespace marlox::repository
