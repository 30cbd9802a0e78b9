// Filing: one record of the host, refilled and added again for every row.
#pragma once

#include <string>
#include <string_view>

#include "rinstance.h"
#include "rrepository.h"

namespace marlox::repository::capture {

class Record {
public:
    Record(RRepository& repository, const std::string& table, const std::string& name)
        : repository_(repository), instance_(table, name, -1) {}

    void set(std::string_view id, std::string_view display, std::string_view value) {
        id_ = id;
        display_ = display;
        value_ = value;
        instance_.AddProperty(id_, display_, value_);
    }

    void set(std::string_view id, std::string_view display, int value) {
        id_ = id;
        display_ = display;
        instance_.AddProperty(id_, display_, value);
    }

    // Adds the record as it stands; what is set stays for the next row.
    void add() const { instance_.AddToRepository(repository_); }

private:
    RRepository& repository_;
    RInstance instance_;
    // Kept between rows, so that filing a row does not allocate.
    std::string id_;
    std::string display_;
    std::string value_;
};

}  // namespace marlox::repository::capture
