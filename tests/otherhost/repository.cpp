#include <algorithm>

#include "rinstance.h"
#include "rinstanceswrapper.h"
#include "rmodule.h"
#include "rrepository.h"

namespace marlox::repository {

RModule::RModule() {
    before_.fill(0xb5);
    behind_.fill(0x5b);
}

RModule::~RModule() = default;

std::string RModule::GetVersion() { return "1"; }

bool RModule::sound() const {
    return std::all_of(before_.begin(), before_.end(), [](auto byte) { return byte == 0xb5; }) &&
           std::all_of(behind_.begin(), behind_.end(), [](auto byte) { return byte == 0x5b; });
}

RInstance::RInstance(const std::string& tableId, const std::string& displayName, int index)
    : index_(index), name_(displayName), table_(tableId) {}

RInstance::~RInstance() = default;

void RInstance::set(const std::string& id, const std::string& display,
                    std::variant<std::string, int> value) {
    for (auto& property : properties_) {
        if (property.id != id) continue;
        property.display = display;
        property.value = std::move(value);
        return;
    }
    properties_.push_back({id, display, std::move(value)});
}

void RInstance::AddProperty(const std::string& id, const std::string& display,
                            const std::string& value) {
    set(id, display, value);
}

void RInstance::AddProperty(const std::string& id, const std::string& display, int value) {
    set(id, display, value);
}

void RInstance::AddToRepository(RRepository& repository) const {
    repository.records.push_back(*this);
}

RInstancesWrapper::~RInstancesWrapper() = default;

void RInstancesWrapper::SetColumnHeaders(const std::vector<std::string>& new_ids, unsigned width,
                                         unsigned new_count) {
    rows = false;
    ids = new_ids;
    widths = {width};
    count = new_count;
}

void RInstancesWrapper::SetRowHeaders(const std::vector<std::string>& new_ids,
                                      const std::vector<unsigned>& new_widths, bool new_flag) {
    rows = true;
    ids = new_ids;
    widths = new_widths;
    flag = new_flag;
}

}  // namespace marlox::repository
