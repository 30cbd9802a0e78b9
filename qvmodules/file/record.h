// A record of the host, which a parser fills and adds once for every row.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "file/table.h"
#include "rinstance.h"
#include "rrepository.h"

namespace marlox::repository::capture {

// The id and the label of a property, as the host takes them. Parsers of long captures make them
// once and not for every row.
struct PropertyName {
    explicit PropertyName(const Column& column) : id(column.id), display(column.label) {}
    PropertyName(std::string_view its_id, std::string_view its_display)
        : id(its_id), display(its_display) {}

    std::string id;
    std::string display;
};

// The column that a row of a parser's table sets.
constexpr const Column& column_of(const Column& column) { return column; }
template <class Row>
constexpr const Column& column_of(const Row& row) {
    return row.column;
}

// The names of the properties that a parser's table sets, in the order of its rows.
template <class Rows>
std::vector<PropertyName> names_of(const Rows& rows) {
    std::vector<PropertyName> names;
    for (const auto& row : rows) names.emplace_back(column_of(row));
    return names;
}

// The columns that a parser's table sets, for the declaration.
template <class Row, std::size_t n>
consteval std::array<Column, n> columns_of(const std::array<Row, n>& rows) {
    std::array<Column, n> columns;
    for (std::size_t i = 0; i < n; ++i) columns[i] = column_of(rows[i]);
    return columns;
}

class Record {
public:
    Record(RRepository& repository, const Table& table)
        : repository_(repository), instance_(std::string(table.id), std::string(table.title), -1) {}

    void set(const PropertyName& name, std::string_view value) {
        value_ = value;
        instance_.AddProperty(name.id, name.display, value_);
    }

    void set(const Column& column, std::string_view value) { set(PropertyName(column), value); }

    void set(const Column& column, int value) {
        instance_.AddProperty(std::string(column.id), std::string(column.label), value);
    }

    // Adds a copy of the record to the repository. The properties keep their values for the next row.
    void add() const { instance_.AddToRepository(repository_); }

private:
    RRepository& repository_;
    RInstance instance_;
    std::string value_;  // kept between rows, so that setting a value does not allocate
};

}  // namespace marlox::repository::capture
