#include "rinstance.h"

#include <utility>

#include "repository/sink.h"

namespace marlox::repository {

struct RInstance::Impl {
    qvhost::Record record;

    void set(const std::string& id, const std::string& display,
             std::variant<std::string, int> value) {
        for (auto& property : record.properties) {
            if (property.id != id) continue;
            property.display = display;
            property.value = std::move(value);
            return;
        }
        record.properties.push_back({id, display, std::move(value)});
    }
};

RInstance::RInstance(const std::string& tableId, const std::string& displayName, int index)
    : impl_(new Impl{
          {tableId, displayName, index, {}}
}) {}

RInstance::~RInstance() { delete impl_; }

void RInstance::AddProperty(const std::string& id, const std::string& display,
                            const std::string& value) {
    impl_->set(id, display, value);
}

void RInstance::AddProperty(const std::string& id, const std::string& display, int value) {
    impl_->set(id, display, value);
}

void RInstance::AddToRepository(RRepository& repository) const {
    repository.impl().add(impl_->record);
}

}  // namespace marlox::repository
