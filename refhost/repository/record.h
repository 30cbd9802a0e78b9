// What the host keeps of a collection: records and layouts, as plain values.
#pragma once

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

namespace qvhost {

struct Property {
    std::string id;
    std::string display;
    std::variant<std::string, int> value;  // a text may hold any byte

    bool operator==(const Property&) const = default;
};

// The same ids and labels in the same order, whatever their values.
inline bool same_kinds(const std::vector<Property>& a, const std::vector<Property>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Property& one, const Property& other) {
                          return one.id == other.id && one.display == other.display;
                      });
}

struct Record {
    std::string table;
    std::string name;
    int index = -1;
    std::vector<Property> properties;  // in the order in which the record first got them

    bool operator==(const Record&) const = default;
};

// The property ids are a header column.
struct ColumnLayout {
    std::vector<std::string> headers;
    unsigned width = 0;
    unsigned count = 0;  // records side by side

    bool operator==(const ColumnLayout&) const = default;
};

// The property ids are a header row.
struct RowLayout {
    std::vector<std::string> headers;
    std::vector<unsigned> widths;  // shares of the whole, one a header
    bool flag = false;

    bool operator==(const RowLayout&) const = default;
};

// Nothing (monostate) where a wrap callback declared no layout.
using Layout = std::variant<std::monostate, ColumnLayout, RowLayout>;

}  // namespace qvhost
