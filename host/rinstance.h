// One record (one row) of one table: an ordered list of properties, one for each property id.
#pragma once

#include <string>

namespace marlox::repository {

class RRepository;

class RInstance {
public:
    // A new record without properties. `displayName` is a caption such as "SEL Information";
    // `index` is -1 where the record has no position of its own.
    RInstance(const std::string& tableId, const std::string& displayName, int index);
    ~RInstance();

    RInstance(const RInstance&) = delete;
    RInstance& operator=(const RInstance&) = delete;

    // Sets the property `id`: its text for people and its value. A property that the record holds
    // already gets the new text and value and keeps its place.
    void AddProperty(const std::string& id, const std::string& display, const std::string& value);
    void AddProperty(const std::string& id, const std::string& display, int value);

    // Stores a copy of the record as it stands now, so one record can be refilled and added again.
    void AddToRepository(RRepository& repository) const;

private:
    struct Impl;
    Impl* impl_;
};

}  // namespace marlox::repository
