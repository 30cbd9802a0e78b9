// Filing: one record of the host, refilled and added again for every row.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rinstance.h"
#include "rrepository.h"

namespace marlox::repository::capture {

// What a property is called, as the host takes it. Parsers of long captures make it once, not for
// every row.
struct PropertyName {
    std::string id;
    std::string display;
};

// The names of the properties that a parser's table sets, in the order of its rows.
template <class Table>
std::vector<PropertyName> names_of(const Table& table) {
    std::vector<PropertyName> names;
    for (const auto& row : table) names.push_back({std::string(row.id), std::string(row.display)});
    return names;
}

class Record {
public:
    Record(RRepository& repository, const std::string& table, const std::string& name)
        : repository_(repository), instance_(table, name, -1) {}

    void set(const PropertyName& name, std::string_view value) {
        value_ = value;
        instance_.AddProperty(name.id, name.display, value_);
    }

    void set(std::string_view id, std::string_view display, std::string_view value) {
        set({std::string(id), std::string(display)}, value);
    }

    void set(std::string_view id, std::string_view display, int value) {
        instance_.AddProperty(std::string(id), std::string(display), value);
    }

    // Adds the record as it stands; what is set stays for the next row.
    void add() const { instance_.AddToRepository(repository_); }

private:
    RRepository& repository_;
    RInstance instance_;
    std::string value_;  // kept between rows, so that setting a value does not allocate
};

}  // namespace marlox::repository::capture
